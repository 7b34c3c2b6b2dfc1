// Whether views are drawn for light or for dark surroundings.
#pragma once

namespace brimwatch {

enum class Appearance { light, dark };

}  // namespace brimwatch
