#include "platform/linux/panel_traits.h"

#include <algorithm>
#include <array>

namespace brimwatch {

namespace {

struct DesktopPanel {
    QLatin1String desktop;
    PanelTraits traits;
};

using NumberPlace = PanelTraits::NumberPlace;
using Shade = PanelTraits::Shade;

// The bars of GNOME and Cinnamon are dark whatever the windows below them are.
constexpr std::array<DesktopPanel, 5> panels = {{
    {QLatin1String("GNOME"), {NumberPlace::label, Shade::dark}},
    {QLatin1String("Unity"), {NumberPlace::label, Shade::dark}},
    {QLatin1String("MATE"), {NumberPlace::label, Shade::asDesktop}},
    {QLatin1String("X-Cinnamon"), {NumberPlace::ownItem, Shade::dark}},
    {QLatin1String("XFCE"), {NumberPlace::ownItem, Shade::dark}},
}};

// As a part of the name, since some distributions wrap the program.
bool isWaybar(const QString& host) {
    return host.contains(u"waybar");
}

}  // namespace

PanelTraits panelTraits(QStringView desktops, const QStringList& hosts) {
    if (!hosts.isEmpty() && std::all_of(hosts.begin(), hosts.end(), isWaybar))
        return {NumberPlace::insidePicture, Shade::dark};
    for (const QStringView desktop : desktops.split(u':')) {
        for (const DesktopPanel& panel : panels)
            if (desktop.compare(panel.desktop, Qt::CaseInsensitive) == 0) return panel.traits;
    }
    return {};
}

}  // namespace brimwatch
