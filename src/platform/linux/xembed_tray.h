// Whether there is a tray of the old kind on the X11 display, one that windows are put into.
//
// Its keeper owns a selection of the display, and tells everybody when it begins to. Main thread.
#pragma once

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <QObject>

namespace brimwatch {

class XembedTray final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    // With a QGuiApplication. On other displays than X11 there is none.
    XembedTray();
    XembedTray(const XembedTray&) = delete;
    XembedTray& operator=(const XembedTray&) = delete;
    ~XembedTray() override;

    bool isThere() const { return owner_ != XCB_WINDOW_NONE; }

  signals:
    void changed();

  private:
    bool nativeEventFilter(const QByteArray& type, void* event, qintptr* result) override;
    xcb_atom_t atom(const char* name) const;
    void findOwner();

    xcb_connection_t* const display_;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t managerMessage_ = XCB_ATOM_NONE;
    xcb_window_t owner_ = XCB_WINDOW_NONE;
};

}  // namespace brimwatch
