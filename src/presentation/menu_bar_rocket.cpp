#include "presentation/menu_bar_rocket.h"

#include <QString>
#include <algorithm>

#include "presentation/rocket_halo.h"

namespace brimwatch {
namespace {

constexpr double rocketHeight = 8.28;

bool isLower(const QImage& left, const QImage& right) {
    return left.height() < right.height();
}

std::vector<QImage> artwork() {
    std::vector<QImage> representations;
    for (const char* suffix : {"", "@2x", "@3x"})
        representations.emplace_back(QStringLiteral(":/brimwatch/MenuBarRocket%1.png").arg(suffix));
    return representations;
}

}  // namespace

std::optional<MenuBarRocket> makeMenuBarRocket(const std::vector<QImage>& representations,
                                               const BitmapMaker& make) {
    const auto highest = std::max_element(representations.begin(), representations.end(), isLower);
    if (highest == representations.end()) return std::nullopt;

    MenuBarRocket rocket;
    rocket.image = highest->convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (rocket.image.isNull()) return std::nullopt;
    rocket.image.setDevicePixelRatio(1);
    rocket.size = {rocket.image.width() * rocketHeight / rocket.image.height(), rocketHeight};

    rocket.halo = rocketHalo(rocket.image, rocket.size, make);
    if (rocket.halo.isNull()) return std::nullopt;
    rocket.haloSize = QSizeF(rocket.halo.size()) / haloPixelsPerPoint;
    return rocket;
}

const std::optional<MenuBarRocket>& sharedRocket() {
    static const std::optional<MenuBarRocket> rocket = makeMenuBarRocket(artwork());
    return rocket;
}

}  // namespace brimwatch
