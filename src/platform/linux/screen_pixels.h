// Places and sizes on the screens in their own pixels, which are not those of Qt where it scales.
//
// With a QGuiApplication, on its thread.
#pragma once

#include <QPoint>

namespace brimwatch {

// Pixels per point of the screen that has most of them.
double largestPixelRatio();
QPoint pointerInPixels();
// Some panels give places that mean nothing here.
bool isOnScreen(QPoint pixel);

}  // namespace brimwatch
