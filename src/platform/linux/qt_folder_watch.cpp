#include "platform/linux/qt_folder_watch.h"

#include <QFile>
#include <QFileInfo>
#include <utility>

namespace brimwatch {

QtFolderWatch::QtFolderWatch() {
    // From the event loop: whoever is called may destroy the watcher, which must not happen from
    // within its signal.
    word_.setSingleShot(true);
    QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &word_,
                     qOverload<>(&QTimer::start));
    QObject::connect(&word_, &QTimer::timeout, &word_, [this] {
        const std::function<void()> changed = changed_;
        changed();
    });
}

void QtFolderWatch::watch(const std::string& folder, std::function<void()> changed) {
    leaveFolder();
    changed_ = std::move(changed);
    const QString path = QFile::decodeName(folder.c_str());
    // Of a folder that it can't watch, Qt prints a warning.
    const QFileInfo information(path);
    if (information.isDir() && information.isReadable()) watcher_.addPath(path);
}

void QtFolderWatch::leaveFolder() {
    word_.stop();
    const QStringList watched = watcher_.directories();
    if (!watched.isEmpty()) watcher_.removePaths(watched);
}

}  // namespace brimwatch
