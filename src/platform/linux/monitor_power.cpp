#include "platform/linux/monitor_power.h"

#include "platform/linux/bus_properties.h"
#include "platform/linux/bus_values.h"

namespace brimwatch {
namespace {

// 0 is on, -1 unknown.
constexpr int standby = 1;
constexpr int off = 3;

}  // namespace

MonitorPower::MonitorPower(BusConnection& sessionBus)
    : mutter_(sessionBus, QStringLiteral("org.gnome.Mutter.DisplayConfig")) {
    connect(&mutter_, &BusService::ownerChanged, this, &MonitorPower::start);
}

void MonitorPower::start() {
    setOff(false);
    watchProperties(mutter_, QStringLiteral("/org/gnome/Mutter/DisplayConfig"),
                    QStringLiteral("org.gnome.Mutter.DisplayConfig"),
                    [this](const QVariantMap& properties) { take(properties); });
}

void MonitorPower::take(const QVariantMap& properties) {
    const auto mode = valueOf<int>(properties.value(QStringLiteral("PowerSaveMode")));
    if (mode) setOff(*mode >= standby && *mode <= off);
}

void MonitorPower::setOff(bool isOff) {
    if (isOff == isOff_) return;
    isOff_ = isOff;
    emit changed();
}

}  // namespace brimwatch
