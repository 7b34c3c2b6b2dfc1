// Where the popover goes on screens that tell where a click was.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <vector>

namespace brimwatch {

// In device-independent pixels, but for the place of its corner, which is the same in both.
struct ScreenPlace {
    QRect geometry;
    QRect available;  // what panels leave of it
    double pixelRatio = 1;
};

// The place of the popover's corner, in device-independent pixels; the click is in pixels of the
// screen. The popover comes beside the panel that was clicked, or below or above a click that no
// panel surrounds, centred at it, and lies within what panels leave of the screen as far as it
// fits. There has to be a screen.
QPoint popoverPlace(QPoint click, QSize popover, const std::vector<ScreenPlace>& screens);

}  // namespace brimwatch
