// Ends an agent that the session keeps running for the user. Main thread.
#pragma once

#include <string>

namespace brimwatch {

class AgentStopper {
  public:
    AgentStopper() = default;
    AgentStopper(const AgentStopper&) = delete;
    AgentStopper& operator=(const AgentStopper&) = delete;
    virtual ~AgentStopper() = default;

    // Returns once the session has dealt with it, whatever came of that. `definition` is the path
    // of the file that describes the agent.
    virtual void stop(const std::string& definition) = 0;
};

}  // namespace brimwatch
