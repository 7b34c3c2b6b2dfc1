// The entry of the library with the views.

#include "app/popover_library.h"
#include "platform/linux/compositor.h"
#include "presentation/views/phone_link_window.h"
#include "presentation/views/quick_popover.h"
#include "presentation/views/quick_setup_window.h"

#define BRIMWATCH_ENTRY extern "C" __attribute__((visibility("default")))

BRIMWATCH_ENTRY brimwatch::Popover* brimwatchMakePopover(
    brimwatch::MenuContentModel& content, const brimwatch::DesktopAppearance& desktop) {
    return new brimwatch::QuickPopover({.content = content,
                                        .desktop = &desktop,
                                        .blendsWindows = brimwatch::compositorBlendsWindows,
                                        .compositorPlaces = brimwatch::compositorPlacesWindows});
}

BRIMWATCH_ENTRY brimwatch::SheetWindow* brimwatchMakePhoneLinkWindow(
    brimwatch::PhoneLinkSheet& sheet, const brimwatch::DesktopAppearance& desktop) {
    return new brimwatch::PhoneLinkWindow(sheet, &desktop);
}

BRIMWATCH_ENTRY brimwatch::SheetWindow* brimwatchMakeSetupWindow(
    brimwatch::SetupViewModel& settings, const brimwatch::DesktopAppearance& desktop) {
    return new brimwatch::QuickSetupWindow({.settings = settings, .desktop = &desktop});
}
