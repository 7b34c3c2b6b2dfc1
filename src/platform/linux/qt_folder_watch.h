// Watching a folder by the event loop of Qt.
//
// A folder that isn't there, can't be read, or has a path that is not UTF-8 gives no word, and
// nothing is printed about that. One that is removed gives one last word at most; what takes its
// name later is another folder. The watch may be destroyed, or given another folder, from within
// its own call. Main thread, while there is an application.
#pragma once

#include <QFileSystemWatcher>
#include <QTimer>
#include <functional>
#include <string>

#include "platform/folder_watch.h"

namespace brimwatch {

class QtFolderWatch final : public FolderWatch {
  public:
    QtFolderWatch();

    void watch(const std::string& folder, std::function<void()> changed) override;

  private:
    void leaveFolder();

    std::function<void()> changed_;
    QFileSystemWatcher watcher_;
    QTimer word_;
};

}  // namespace brimwatch
