// The library with the views, which lies beside the desktop program and is loaded when the popover
// is first opened: a program that only sits in the panel then needs neither Qt Quick nor the views.
#pragma once

#include <functional>
#include <memory>

#include "presentation/menu_content_model.h"
#include "presentation/popover.h"

namespace brimwatch {

// Nothing, and a line in the log, if the library can't be had. The content must outlive the
// popover.
std::unique_ptr<Popover> loadPopover(MenuContentModel& content);

// What the library offers under the name `brimwatchMakePopover`. Nothing that it takes or gives
// needs another owner than usual, since both sides are of one build.
using MakePopover = Popover*(MenuContentModel& content);

}  // namespace brimwatch
