#include "platform/linux/session_file_manager.h"

#include <sys/stat.h>

#include <QByteArray>
#include <QDBusError>
#include <QLoggingCategory>
#include <utility>

#include "support/paths.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(filesLog, "net.quillmoor.brimwatch.mac.files")

constexpr QLatin1String fileManager("org.freedesktop.FileManager1");

// One that is slow has been asked all the same: it would show the folder twice.
bool hasRefused(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ErrorMessage) return false;
    const QDBusError::ErrorType error = QDBusError(answer).type();
    return error != QDBusError::NoReply && error != QDBusError::Timeout &&
           error != QDBusError::TimedOut;
}

// By its bytes: a name need not be text.
QUrl urlOf(const std::string& path) {
    return QUrl::fromEncoded("file://" + QByteArray::fromStdString(path).toPercentEncoding("/"));
}

std::string pathOf(const QUrl& place) {
    const QByteArray path = place.path(QUrl::FullyEncoded).toLatin1();
    return QByteArray::fromPercentEncoding(path).toStdString();
}

// Of a folder itself, or of that which a file lies in.
QUrl folderOf(const QUrl& place) {
    const std::string path = pathOf(place);
    struct stat status {};
    const bool isFolder = ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder ? place : urlOf(parentPath(path));
}

}  // namespace

SessionFileManager::SessionFileManager(BusConnection& sessionBus, Open open)
    : bus_(sessionBus), open_(std::move(open)) {}

void SessionFileManager::reveal(const std::string& path) {
    const QUrl place = urlOf(path);
    if (!bus_.isConnected()) return openFolderOf(place);
    bus_.call({.service = fileManager,
               .path = QStringLiteral("/org/freedesktop/FileManager1"),
               .interface = fileManager,
               .method = QStringLiteral("ShowItems"),
               .arguments = {QStringList(QString::fromLatin1(place.toEncoded())), QString()},
               .start = BusCall::Start::ifNeeded},
              &context_, [this, place](const QDBusMessage& answer) {
                  if (hasRefused(answer)) openFolderOf(place);
              });
}

void SessionFileManager::openFolderOf(const QUrl& place) {
    if (!open_(folderOf(place))) qCWarning(filesLog) << "Nothing here can show a folder";
}

}  // namespace brimwatch
