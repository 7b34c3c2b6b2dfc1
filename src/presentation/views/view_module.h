// The QML module `Brimwatch`, in engines that are made outside of it. Main thread.
#pragma once

class QQmlEngine;

namespace brimwatch {

class ViewPalette;

// Makes the module known to the engine. The palette is the engine's.
ViewPalette& preparedPalette(QQmlEngine& engine);

}  // namespace brimwatch
