// How a second start of the program reaches the first one: by the name `net.quillmoor.brimwatch` on
// the session bus.
//
// Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <chrono>

#include "platform/linux/application_interface.h"
#include "platform/linux/bus_service.h"
#include "support/environment.h"

namespace brimwatch {

// Holds the name, from the time that it is free: a former instance that is about to end keeps it
// until then, and a bus that comes back is asked again. It is taken from nobody.
class InstanceActivation final : public QObject {
    Q_OBJECT

  public:
    // The connection must outlive this; it may be opened before or after.
    explicit InstanceActivation(BusConnection& sessionBus);

    bool ownsName() const;

  signals:
    // Somebody asks the program to show itself, with what lets a window come to the front: an
    // activation token of Wayland or a startup id of X11, or empty.
    void activated(const QString& token);

  private:
    void exportInterface();
    void takeFreeName();

    BusConnection& bus_;
    BusService name_;
    ApplicationInterface interface_;
};

enum class InstanceAnswer {
    activated,
    noInstance,  // nobody has the name
    noAnswer,    // somebody has it, who failed or was silent until the time was over
    noBus,
};

// For a start that is not the first: asks the running instance to show itself, with the token that
// this process was started with. Waits for the answer, but starts nothing.
InstanceAnswer activateRunningInstance(
    const Environment& environment,
    std::chrono::milliseconds longestWait = std::chrono::seconds(2));

}  // namespace brimwatch
