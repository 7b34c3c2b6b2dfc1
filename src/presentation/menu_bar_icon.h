// One frame of the ring and its rocket, as the painter is given it.
//
// Angles are in radians; those of the ring are 0 at its top and grow clockwise. Lengths are in
// points of a square of 20 by 20. A plain value.
#pragma once

namespace brimwatch {

// How far this frame's rocket is off its place.
struct MenuBarShake {
    double radial = 0;  // outward
    double angle = 0;   // along the ring

    bool operator==(const MenuBarShake&) const = default;
};

struct MenuBarIcon {
    double remaining = 0;  // length of the arc as a fraction of the ring
    double angle = 0;      // of the head of the arc
    MenuBarShake shake;

    bool operator==(const MenuBarIcon&) const = default;
};

}  // namespace brimwatch
