// What panels of different desktops do differently, as far as it can't be asked for.
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace brimwatch {

struct PanelTraits {
    // Where the number goes for people to see it.
    enum class NumberPlace {
        label,          // the panel draws it beside the picture
        insidePicture,  // the panel shows wide pictures as they are
        ownItem,        // wide pictures are squeezed into a square: a picture of its own
    };
    // Nobody tells what colour the panel has.
    enum class Shade { dark, asDesktop };

    NumberPlace numberPlace = NumberPlace::ownItem;
    Shade shade = Shade::asDesktop;

    bool operator==(const PanelTraits&) const = default;
};

// `desktops` is XDG_CURRENT_DESKTOP, names with colons between them; `hosts` are the names of the
// programs that show the items.
PanelTraits panelTraits(QStringView desktops, const QStringList& hosts);

}  // namespace brimwatch
