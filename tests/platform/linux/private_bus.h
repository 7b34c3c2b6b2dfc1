// A message bus of the test's own, which can die and come back at the same address.
#pragma once

#include <QString>
#include <optional>
#include <string>

#include "harness/process.h"
#include "harness/temporary_folder.h"

namespace brimwatch::test {

class PrivateBus {
  public:
    PrivateBus();  // runs

    std::string path() const { return folder_.file("bus"); }
    std::string addressText() const { return "unix:path=" + path(); }
    QString address() const { return QString::fromStdString(addressText()); }

    // Returns once it takes connections.
    void start();
    // Returns once nothing of it is left.
    void kill();
    // A service that the bus can start: it leaves a file of its name and ends.
    void offer(const std::string& service);
    bool hasStarted(const std::string& service) const;

  private:
    std::string mark(const std::string& service) const {
        return folder_.file(service + ".started");
    }

    TemporaryFolder folder_;
    std::optional<Process> daemon_;
};

}  // namespace brimwatch::test
