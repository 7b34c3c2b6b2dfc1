// A window of the program that is made of views. Main thread.
#pragma once

#include <QWindow>

#include "presentation/appearance.h"

namespace brimwatch {

class SheetWindow {
  public:
    SheetWindow() = default;
    SheetWindow(const SheetWindow&) = delete;
    SheetWindow& operator=(const SheetWindow&) = delete;
    virtual ~SheetWindow() = default;

    // Brings it forward if it is shown already. With a parent it stays in front of that.
    virtual void show(QWindow* parent) = 0;
    virtual void setAppearance(Appearance appearance) = 0;
    // A factor for the size of all texts, above 0.
    virtual void setTextScale(double scale) = 0;

    // None before it was first shown.
    virtual QWindow* window() const = 0;
};

}  // namespace brimwatch
