// The library with the views, which lies beside the desktop program and is loaded when the first of
// them is opened: a program that only sits in the panel then needs neither Qt Quick nor the views.
#pragma once

#include <functional>
#include <memory>

#include "presentation/menu_content_model.h"
#include "presentation/phone_link_sheet.h"
#include "presentation/popover.h"
#include "presentation/setup/setup_view_model.h"
#include "presentation/sheet_window.h"

namespace brimwatch {

// Nothing, and a line in the log, if the library can't be had. What is shown must outlive what
// shows it.
std::unique_ptr<Popover> loadPopover(MenuContentModel& content);
std::unique_ptr<SheetWindow> loadPhoneLinkWindow(PhoneLinkSheet& sheet);
std::unique_ptr<SheetWindow> loadSetupWindow(SetupViewModel& settings);

// What the library offers under the names `brimwatchMakePopover`, `brimwatchMakePhoneLinkWindow`
// and `brimwatchMakeSetupWindow`. Nothing that they take or give needs another owner than usual,
// since both sides are of one build.
using MakePopover = Popover*(MenuContentModel& content);
using MakePhoneLinkWindow = SheetWindow*(PhoneLinkSheet& sheet);
using MakeSetupWindow = SheetWindow*(SetupViewModel& settings);

}  // namespace brimwatch
