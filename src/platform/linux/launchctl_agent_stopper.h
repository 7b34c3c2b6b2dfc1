// Ending an agent of the session by the command `launchctl`. Systems without that command have no
// such agents: there is nothing to do then, and nothing is done.
//
// The command is waited for, however long it takes; its output and its exit status are dropped. It
// has our environment, no descriptor of ours, and the usual actions for all signals.
#pragma once

#include <string>

#include "platform/agent_stopper.h"
#include "support/environment.h"

namespace brimwatch {

class LaunchctlAgentStopper final : public AgentStopper {
  public:
    // `command` is the path of the command.
    explicit LaunchctlAgentStopper(Environment environment, std::string command = "/bin/launchctl");

    void stop(const std::string& definition) override;

  private:
    Environment environment_;
    std::string command_;
};

}  // namespace brimwatch
