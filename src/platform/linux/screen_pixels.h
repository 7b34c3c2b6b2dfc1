// Places and sizes on the screens in their own pixels, which are not those of Qt where it scales.
//
// With a QGuiApplication, on its thread.
#pragma once

#include <QPoint>
#include <QRect>

namespace brimwatch {

// Pixels per point of the screen that has most of them.
double largestPixelRatio();
// What is opened there covers nothing of the item: as far along its panel as the pointer, and at
// the edge of the item that looks into the screen. The rectangle is in device-independent pixels.
QPoint edgeInPixels(const QRect& item, QPoint pointer);
// Some panels give places that mean nothing here.
bool isOnScreen(QPoint pixel);

}  // namespace brimwatch
