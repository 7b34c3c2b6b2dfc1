// A window of the program beside the settings: a sheet with a matter of its own. Main thread.
#pragma once

#include "presentation/appearance.h"

namespace brimwatch {

class SheetWindow {
  public:
    SheetWindow() = default;
    SheetWindow(const SheetWindow&) = delete;
    SheetWindow& operator=(const SheetWindow&) = delete;
    virtual ~SheetWindow() = default;

    // Brings it forward if it is shown already.
    virtual void show() = 0;
    virtual void setAppearance(Appearance appearance) = 0;
    // A factor for the size of all texts, above 0.
    virtual void setTextScale(double scale) = 0;
};

}  // namespace brimwatch
