// The QML module `Brimwatch`, in engines that are made outside of it. Main thread.
#pragma once

class QQmlEngine;
class QQuickItem;

namespace brimwatch {

class ViewPalette;

// To be called before the first window is made. Of all ways to draw, it takes the least memory, and
// the least time to the first picture.
void drawBySoftware();

// Makes the module known to the engine. The palette is the engine's.
ViewPalette& preparedPalette(QQmlEngine& engine);

// Gives everything in the item its size. By itself that would happen only with the first picture.
void layOut(QQuickItem& root);

}  // namespace brimwatch
