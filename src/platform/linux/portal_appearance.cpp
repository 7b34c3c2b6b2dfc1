#include "platform/linux/portal_appearance.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/bus_values.h"
#include "platform/linux/kde_globals.h"

namespace brimwatch {
namespace {

constexpr QLatin1String portalName("org.freedesktop.portal.Desktop");
constexpr QLatin1String portalPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String settingsInterface("org.freedesktop.portal.Settings");

constexpr QLatin1String appearanceGroup("org.freedesktop.appearance");
constexpr QLatin1String gnomeGroup("org.gnome.desktop.interface");
constexpr QLatin1String colorSchemeKey("color-scheme");
constexpr QLatin1String reducedMotionKey("reduced-motion");
constexpr QLatin1String contrastKey("contrast");
constexpr QLatin1String animationsKey("enable-animations");
constexpr QLatin1String textScaleKey("text-scaling-factor");

constexpr std::uint32_t prefersDark = 1;
constexpr std::uint32_t prefersLight = 2;
constexpr std::uint32_t prefersReducedMotion = 1;
constexpr std::uint32_t prefersHigherContrast = 1;

constexpr double smallestTextScale = 0.5;
constexpr double largestTextScale = 3;

bool hasDarkPalette() {
    constexpr int middleLightness = 128;
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) return false;
    return QGuiApplication::palette().color(QPalette::Window).lightness() < middleLightness;
}

double textScaleOf(std::optional<double> factor) {
    if (!factor || std::isnan(*factor)) return 1;
    return std::clamp(*factor, smallestTextScale, largestTextScale);
}

}  // namespace

PortalAppearance::PortalAppearance(BusConnection& sessionBus, FileSystem& files,
                                   const std::optional<std::string>& configFolder)
    : bus_(sessionBus),
      portal_(sessionBus, portalName),
      kdeStopsMotion_(kdeStopsMotion(files, configFolder)),
      isDark_(findDark()),
      reducesMotion_(findReducedMotion()) {
    connect(&bus_, &BusConnection::connected, this, &PortalAppearance::startPortal);
    connect(&portal_, &BusService::ownerChanged, this, &PortalAppearance::read);
    if (QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->installEventFilter(this);
    if (bus_.isConnected()) startPortal();
}

bool PortalAppearance::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange &&
        watched == QCoreApplication::instance())
        update();
    return false;
}

void PortalAppearance::startPortal() {
    const std::uint32_t noFlags = 0;
    bus_.call({QStringLiteral("org.freedesktop.DBus"),
               QStringLiteral("/org/freedesktop/DBus"),
               QStringLiteral("org.freedesktop.DBus"),
               QStringLiteral("StartServiceByName"),
               {QString(portalName), noFlags}},
              this, [](const QDBusMessage&) {});
}

void PortalAppearance::read() {
    portal_.listen({.path = portalPath,
                    .interface = settingsInterface,
                    .name = QStringLiteral("SettingChanged")},
                   [this](const QDBusMessage& message) { hear(message); });
    readSetting(appearanceGroup, colorSchemeKey);
    readSetting(appearanceGroup, reducedMotionKey);
    readSetting(appearanceGroup, contrastKey);
    readSetting(gnomeGroup, animationsKey);
    readSetting(gnomeGroup, textScaleKey);
}

void PortalAppearance::hear(const QDBusMessage& message) {
    if (message.signature() != QLatin1String("ssv")) return;
    const QVariantList arguments = message.arguments();
    const QString group = arguments.at(0).toString();
    const QString key = arguments.at(1).toString();
    // It counts more than an answer that is still on its way.
    unread_.erase({group, key});
    take(group, key, unwrapped(arguments.at(2)));
}

void PortalAppearance::readSetting(const QString& group, const QString& key) {
    unread_.emplace(group, key);
    // The newer `ReadOne` is missing from many portals.
    portal_.call(portalPath, settingsInterface, QStringLiteral("Read"), {group, key},
                 [this, group, key](const QDBusMessage& answer) {
                     if (unread_.erase({group, key}) > 0) take(group, key, variantAnswer(answer));
                 });
}

void PortalAppearance::take(const QString& group, const QString& key, const QVariant& value) {
    if (group == appearanceGroup && key == colorSchemeKey) {
        colorScheme_ = valueOf<std::uint32_t>(value);
    } else if (group == appearanceGroup && key == reducedMotionKey) {
        reducedMotion_ = valueOf<std::uint32_t>(value);
    } else if (group == appearanceGroup && key == contrastKey) {
        contrast_ = valueOf<std::uint32_t>(value);
    } else if (group == gnomeGroup && key == animationsKey) {
        animations_ = valueOf<bool>(value);
    } else if (group == gnomeGroup && key == textScaleKey) {
        textScalingFactor_ = valueOf<double>(value);
    }
    update();
}

void PortalAppearance::update() {
    const bool isDark = findDark();
    const bool reducesMotion = findReducedMotion();
    const bool increasesContrast = contrast_ == prefersHigherContrast;
    const double textScale = textScaleOf(textScalingFactor_);
    const bool darkChanges = std::exchange(isDark_, isDark) != isDark;
    const bool motionChanges = std::exchange(reducesMotion_, reducesMotion) != reducesMotion;
    const bool contrastChanges =
        std::exchange(increasesContrast_, increasesContrast) != increasesContrast;
    const bool textScaleChanges = std::exchange(textScale_, textScale) != textScale;
    if (darkChanges) emit darkChanged();
    if (motionChanges) emit motionChanged();
    if (contrastChanges) emit contrastChanged();
    if (textScaleChanges) emit textScaleChanged();
}

bool PortalAppearance::findDark() const {
    if (colorScheme_ == prefersDark) return true;
    if (colorScheme_ == prefersLight) return false;
    return hasDarkPalette();
}

bool PortalAppearance::findReducedMotion() const {
    if (reducedMotion_ == prefersReducedMotion || animations_ == false) return true;
    const bool isTold = reducedMotion_ || animations_;
    return !isTold && kdeStopsMotion_;
}

}  // namespace brimwatch
