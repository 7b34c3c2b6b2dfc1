#include "app/popover_library.h"

#include <QFile>
#include <QLibrary>
#include <QLoggingCategory>

#include "platform/posix/executable_path.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(viewsLog, "net.quillmoor.brimwatch.views")

QString libraryPath() {
    const std::optional<std::string> own = resolvedExecutablePath();
    return own ? QFile::decodeName(joinPath(parentPath(*own), "brimwatch-views.so").c_str())
               : QString();
}

}  // namespace

std::unique_ptr<Popover> loadPopover(MenuContentModel& content) {
    QLibrary library(libraryPath());
    auto* make = reinterpret_cast<MakePopover*>(library.resolve("brimwatchMakePopover"));
    if (make == nullptr) {
        qCWarning(viewsLog, "The views can't be loaded: %s", qUtf8Printable(library.errorString()));
        return nullptr;
    }
    return std::unique_ptr<Popover>(make(content));
}

}  // namespace brimwatch
