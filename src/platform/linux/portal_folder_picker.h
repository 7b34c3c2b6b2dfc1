// The folder chooser of the desktop portal, and another one where the portal has none.
//
// The interface is `org.freedesktop.portal.FileChooser`, which knows folders since its version 3:
// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.FileChooser.html
// Main thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWindow>
#include <memory>

#include "platform/folder_picker.h"
#include "platform/linux/bus_connection.h"
#include "platform/linux/bus_service.h"

namespace brimwatch {

class PortalFolderPicker final : public FolderPicker {
  public:
    // Both must outlive this.
    PortalFolderPicker(BusConnection& sessionBus, FolderPicker& otherwise);
    PortalFolderPicker(const PortalFolderPicker&) = delete;
    PortalFolderPicker& operator=(const PortalFolderPicker&) = delete;
    ~PortalFolderPicker() override;

    void pick(QWindow& parent, const QString& title, Picked picked) override;

  private:
    struct Question;

    void askPortal(quint32 version);
    void hear(const QDBusMessage& response);
    void askOtherwise();
    void withdraw();

    BusConnection& bus_;
    FolderPicker& otherwise_;
    BusService portal_;
    quint64 lastToken_ = 0;
    std::unique_ptr<Question> question_;
};

}  // namespace brimwatch
