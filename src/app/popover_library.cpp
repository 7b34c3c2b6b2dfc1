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

template <class Function>
Function* find(const char* name) {
    QLibrary library(libraryPath());
    auto* function = reinterpret_cast<Function*>(library.resolve(name));
    if (function == nullptr)
        qCWarning(viewsLog, "The views can't be loaded: %s", qUtf8Printable(library.errorString()));
    return function;
}

}  // namespace

std::unique_ptr<Popover> loadPopover(MenuContentModel& content) {
    auto* make = find<MakePopover>("brimwatchMakePopover");
    return std::unique_ptr<Popover>(make == nullptr ? nullptr : make(content));
}

std::unique_ptr<SheetWindow> loadPhoneLinkWindow(PhoneLinkSheet& sheet) {
    auto* make = find<MakePhoneLinkWindow>("brimwatchMakePhoneLinkWindow");
    return std::unique_ptr<SheetWindow>(make == nullptr ? nullptr : make(sheet));
}

std::unique_ptr<SheetWindow> loadSetupWindow(SetupViewModel& settings) {
    auto* make = find<MakeSetupWindow>("brimwatchMakeSetupWindow");
    return std::unique_ptr<SheetWindow>(make == nullptr ? nullptr : make(settings));
}

}  // namespace brimwatch
