// The file manager of the session, asked over the bus as the freedesktop file manager interface has
// it: https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
//
// Where there is no such service, the folder is opened by whatever the desktop opens folders with.
// Nothing waits. Main thread.
#pragma once

#include <QObject>
#include <QUrl>
#include <functional>
#include <string>

#include "platform/file_manager.h"
#include "platform/linux/bus_connection.h"

namespace brimwatch {

class SessionFileManager final : public FileManager {
  public:
    using Open = std::function<bool(const QUrl& folder)>;

    // The connection must outlive this. `open` tells whether it could.
    SessionFileManager(BusConnection& sessionBus, Open open);

    void reveal(const std::string& path) override;

  private:
    void openFolderOf(const QUrl& place);

    BusConnection& bus_;
    Open open_;
    QObject context_;  // of the calls that are under way
};

}  // namespace brimwatch
