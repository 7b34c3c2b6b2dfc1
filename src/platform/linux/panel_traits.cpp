#include "platform/linux/panel_traits.h"

#include <algorithm>
#include <array>

namespace brimwatch {

namespace {

using NewItem = PanelTraits::NewItem;
using NumberPlace = PanelTraits::NumberPlace;
using Shade = PanelTraits::Shade;

struct DesktopPanel {
    QLatin1String desktop;
    PanelTraits traits;
};

constexpr QLatin1String xfce("XFCE");

// Its own style, which most people start from, is dark. It shows icons of 16 pixels, or of the 20
// or so that its example suggests; of a larger picture it makes a blurred one.
constexpr PanelTraits waybar = {NumberPlace::insidePicture, NewItem::onTheRight, Shade::dark, 20};

// The bars of GNOME and Cinnamon are dark whatever the windows below them are.
constexpr std::array<DesktopPanel, 5> panels = {{
    {QLatin1String("GNOME"), {NumberPlace::label, NewItem::onTheRight, Shade::dark}},
    {QLatin1String("Unity"), {NumberPlace::label, NewItem::onTheRight, Shade::dark}},
    {QLatin1String("MATE"), {NumberPlace::label, NewItem::onTheRight, Shade::asDesktop}},
    {QLatin1String("X-Cinnamon"), {NumberPlace::ownItem, NewItem::onTheRight, Shade::dark}},
    {xfce, {NumberPlace::ownItem, NewItem::onTheLeft, Shade::asDesktop}},
}};

bool isSame(QStringView desktop, QLatin1String name) {
    return desktop.compare(name, Qt::CaseInsensitive) == 0;
}

// As a part of the name, since some distributions wrap the program.
bool isWaybar(const QString& host) {
    return host.contains(u"waybar");
}

}  // namespace

bool isXfce(QStringView desktops) {
    const QList<QStringView> names = desktops.split(u':');
    return std::any_of(names.begin(), names.end(),
                       [](QStringView name) { return isSame(name, xfce); });
}

PanelTraits panelTraits(QStringView desktops, const QStringList& hosts) {
    if (!hosts.isEmpty() && std::all_of(hosts.begin(), hosts.end(), isWaybar)) return waybar;
    for (const QStringView name : desktops.split(u':')) {
        for (const DesktopPanel& panel : panels)
            if (isSame(name, panel.desktop)) return panel.traits;
    }
    return {};
}

}  // namespace brimwatch
