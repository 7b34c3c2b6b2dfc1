#include "app/own_library.h"

#include <QFile>
#include <QLibrary>
#include <QLoggingCategory>
#include <optional>
#include <string>

#include "platform/posix/executable_path.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(libraryLog, "net.quillmoor.brimwatch.library")

QString pathOf(const char* fileName) {
    const std::optional<std::string> own = resolvedExecutablePath();
    return own ? QFile::decodeName(joinPath(parentPath(*own), fileName).c_str()) : QString();
}

}  // namespace

QFunctionPointer findInOwnLibrary(const char* fileName, const char* function) {
    QLibrary library(pathOf(fileName));
    QFunctionPointer found = library.resolve(function);
    if (found == nullptr)
        qCWarning(libraryLog, "%s can't be used: %s", fileName,
                  qUtf8Printable(library.errorString()));
    return found;
}

}  // namespace brimwatch
