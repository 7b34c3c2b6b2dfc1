#include "platform/linux/session_file_manager.h"

#include <QDBusError>
#include <QFileInfo>
#include <QLoggingCategory>
#include <utility>

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

}  // namespace

SessionFileManager::SessionFileManager(BusConnection& sessionBus, Open open)
    : bus_(sessionBus), open_(std::move(open)) {}

void SessionFileManager::reveal(const std::string& path) {
    const QUrl place = QUrl::fromLocalFile(QString::fromStdString(path));
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
    const QFileInfo file(place.toLocalFile());
    const QUrl folder = file.isDir() ? place : QUrl::fromLocalFile(file.absolutePath());
    if (!open_(folder)) qCWarning(filesLog) << "Nothing here can show a folder";
}

}  // namespace brimwatch
