// The entry of the library with the views.

#include "app/popover_library.h"
#include "platform/linux/compositor.h"
#include "presentation/views/phone_link_window.h"
#include "presentation/views/quick_popover.h"
#include "presentation/views/quick_setup_window.h"

extern "C" __attribute__((visibility("default"))) brimwatch::Popover* brimwatchMakePopover(
    brimwatch::MenuContentModel& content) {
    return new brimwatch::QuickPopover(
        {.content = content, .blendsWindows = brimwatch::compositorBlendsWindows});
}

extern "C" __attribute__((visibility("default"))) brimwatch::SheetWindow*
brimwatchMakePhoneLinkWindow(brimwatch::PhoneLinkSheet& sheet) {
    return new brimwatch::PhoneLinkWindow(sheet);
}

extern "C" __attribute__((visibility("default"))) brimwatch::SheetWindow* brimwatchMakeSetupWindow(
    brimwatch::SetupViewModel& settings) {
    return new brimwatch::QuickSetupWindow({.settings = settings});
}
