#include "app/popover_library.h"

#include "app/own_library.h"

namespace brimwatch {
namespace {

template <class Window, class Function, class Content>
std::unique_ptr<Window> make(const char* name, Content& content, const DesktopAppearance& desktop) {
    auto* function = reinterpret_cast<Function*>(findInOwnLibrary("brimwatch-views.so", name));
    return std::unique_ptr<Window>(function == nullptr ? nullptr : function(content, desktop));
}

}  // namespace

std::unique_ptr<Popover> loadPopover(MenuContentModel& content, const DesktopAppearance& desktop) {
    return make<Popover, MakePopover>("brimwatchMakePopover", content, desktop);
}

std::unique_ptr<SheetWindow> loadPhoneLinkWindow(PhoneLinkSheet& sheet,
                                                 const DesktopAppearance& desktop) {
    return make<SheetWindow, MakePhoneLinkWindow>("brimwatchMakePhoneLinkWindow", sheet, desktop);
}

std::unique_ptr<SheetWindow> loadSetupWindow(SetupViewModel& settings,
                                             const DesktopAppearance& desktop) {
    return make<SheetWindow, MakeSetupWindow>("brimwatchMakeSetupWindow", settings, desktop);
}

}  // namespace brimwatch
