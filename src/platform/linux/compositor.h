// Whether windows on this desktop can be transparent. Main thread.
#pragma once

namespace brimwatch {

// Whether what lies behind a window shows through where it is transparent, as things are now: on
// X11 a compositor has to run for that. Needs a QGuiApplication.
bool compositorBlendsWindows();

}  // namespace brimwatch
