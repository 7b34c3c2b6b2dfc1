// The library with the views, which lies beside the desktop program and is loaded when the first of
// them is opened: a program that only sits in the panel then needs neither Qt Quick nor the views.
#pragma once

#include <functional>
#include <memory>

#include "platform/desktop_appearance.h"
#include "presentation/menu_content_model.h"
#include "presentation/phone_link_sheet.h"
#include "presentation/popover.h"
#include "presentation/setup/setup_view_model.h"
#include "presentation/sheet_window.h"

namespace brimwatch {

// Nothing, and a line in the log, if the library can't be had. What is shown must outlive what
// shows it, and so must the desktop.
std::unique_ptr<Popover> loadPopover(MenuContentModel& content, const DesktopAppearance& desktop);
std::unique_ptr<SheetWindow> loadPhoneLinkWindow(PhoneLinkSheet& sheet,
                                                 const DesktopAppearance& desktop);
std::unique_ptr<SheetWindow> loadSetupWindow(SetupViewModel& settings,
                                             const DesktopAppearance& desktop);

// What the library offers under the names `brimwatchMakePopover`, `brimwatchMakePhoneLinkWindow`
// and `brimwatchMakeSetupWindow`. Nothing that they take or give needs another owner than usual,
// since both sides are of one build.
using MakePopover = Popover*(MenuContentModel& content, const DesktopAppearance& desktop);
using MakePhoneLinkWindow = SheetWindow*(PhoneLinkSheet& sheet, const DesktopAppearance& desktop);
using MakeSetupWindow = SheetWindow*(SetupViewModel& settings, const DesktopAppearance& desktop);

}  // namespace brimwatch
