// What the compositor of this desktop does with windows. Main thread.
#pragma once

namespace brimwatch {

// Whether what lies behind a window shows through where it is transparent, as things are now: on
// X11 a compositor has to run for that. Needs a QGuiApplication.
bool compositorBlendsWindows();

// Whether windows stand where it wants them, as on Wayland. Needs a QGuiApplication.
bool compositorPlacesWindows();

}  // namespace brimwatch
