// Tests with a message bus of their own and a connection to it.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "harness/environment_list.h"
#include "harness/process.h"
#include "platform/linux/application_test.h"
#include "platform/linux/bus_connection.h"
#include "platform/linux/fake_service.h"
#include "platform/linux/private_bus.h"

namespace brimwatch::test {

// Pauses that a test can wait for. Services have time to answer, however slow the machine.
constexpr BusConnection::Timing quickTiming{.firstPause = std::chrono::milliseconds(5),
                                            .longestPause = std::chrono::milliseconds(40),
                                            .answer = std::chrono::seconds(60)};
// For services that never answer.
constexpr BusConnection::Timing impatientTiming{.firstPause = std::chrono::milliseconds(5),
                                                .longestPause = std::chrono::milliseconds(40),
                                                .answer = std::chrono::milliseconds(300)};

// Another process on that bus: tests/platform/linux/bus_companion.cpp.
Process startCompanion(const PrivateBus& bus, const std::string& task,
                       EnvironmentList environment = {});

class BusTest : public ApplicationTest {
  protected:
    void SetUp() override;
    // What a test holds of the bus must be gone before.
    void TearDown() override;

    // Opens a connection in place of the former one.
    void connectToBus(BusConnection::Timing timing);
    // Lets the bus start such a service, which leaves a mark and ends.
    void offer(const std::string& service);
    // What the service, and the bus of it, have said so far has arrived after this.
    bool hasArrived(const FakeService& service);
    bool hasArrived(BusConnection& bus, const FakeService& service) const;

    std::optional<PrivateBus> daemon_;
    std::unique_ptr<BusConnection> bus_;  // open

  private:
    std::set<int> descriptors_;
};

}  // namespace brimwatch::test
