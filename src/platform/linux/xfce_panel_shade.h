// Whether the panel of Xfce is dark though the desktop is not, by its setting for that.
//
// False until the settings have answered, and where they don't. Main thread.
#pragma once

#include <QObject>

#include "platform/linux/event_loop_bus.h"

namespace brimwatch {

class XfcePanelShade final : public QObject {
    Q_OBJECT

  public:
    // The bus is open, and outlives it.
    explicit XfcePanelShade(EventLoopBus& bus);

    bool isDark() const { return isDark_; }

  signals:
    void changed();

  private:
    static int hearChange(sd_bus_message* signal, void* shade, sd_bus_error* error);
    void noteSetting(sd_bus_message* message);

    BusSlot subscription_;
    bool isDark_ = false;
};

}  // namespace brimwatch
