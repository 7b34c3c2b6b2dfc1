// Whether GNOME has switched the monitors off to save power.
//
// While it can't be told, they are on. Main thread.
#pragma once

#include <QObject>
#include <QVariantMap>

#include "platform/linux/bus_service.h"

namespace brimwatch {

class MonitorPower final : public QObject {
    Q_OBJECT

  public:
    explicit MonitorPower(BusConnection& sessionBus);

    bool isOff() const { return isOff_; }

  signals:
    void changed();

  private:
    void start();
    void take(const QVariantMap& properties);
    void setOff(bool isOff);

    BusService mutter_;
    bool isOff_ = false;
};

}  // namespace brimwatch
