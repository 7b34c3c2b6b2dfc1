// The item in a tray of the old kind: two windows, for the picture and for the number, and a menu
// that is drawn here.
//
// It must be made only while there is no keeper of items on the bus, or Qt would hand the picture
// to that one. Needs a QApplication. Main thread.
#pragma once

#include <QMenu>
#include <QObject>
#include <QPoint>
#include <QSystemTrayIcon>
#include <memory>

#include "platform/linux/panel_content.h"

namespace brimwatch {

class XembedPanel final : public QObject {
    Q_OBJECT

  public:
    // The content must outlive it.
    explicit XembedPanel(const PanelContent& content);

    // Show what has changed in the content.
    void updateNumber();
    void updatePicture();
    void updateRows();

  signals:
    // With a place at the item that was clicked.
    void activated(QPoint position);
    void menuOpened();
    void commandChosen(int id);

  private:
    void showNumber();
    void updateToolTip();
    void setUp(QSystemTrayIcon& icon);

    const PanelContent& content_;
    QMenu menu_;
    QSystemTrayIcon ring_;
    std::unique_ptr<QSystemTrayIcon> number_;
    QString drawnNumber_;
    StatusItem::Look drawnLook_;
};

}  // namespace brimwatch
