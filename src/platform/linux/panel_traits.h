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
    // The side on which a new item comes to stand of those that are there.
    enum class NewItem { onTheRight, onTheLeft };
    // Nobody tells what colour the panel has.
    enum class Shade { asDesktop, dark };

    NumberPlace numberPlace = NumberPlace::ownItem;
    NewItem newItem = NewItem::onTheRight;
    Shade shade = Shade::asDesktop;
    // The side of the picture that it shows most sharply, on a screen without scaling.
    int pictureSidePixels = 22;

    bool operator==(const PanelTraits&) const = default;
};

// Among XDG_CURRENT_DESKTOP, names with colons between them.
bool isXfce(QStringView desktops);

// `hosts` are the names of the programs that show the items.
PanelTraits panelTraits(QStringView desktops, const QStringList& hosts);

}  // namespace brimwatch
