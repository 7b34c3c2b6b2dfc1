// What the update engine keeps from one run to the next, in a file of its own, `updates.json`. Main
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/state_files.h"
#include "support/instant.h"

namespace brimwatch {

class UpdateState {
  public:
    // The files must outlive it. What is damaged counts as absent.
    UpdateState(FileSystem& files, std::string folder);

    bool automaticallyChecks() const { return automaticallyChecks_; }
    bool automaticallyDownloads() const { return automaticallyDownloads_; }
    const std::optional<Instant>& lastCheck() const { return lastCheck_; }
    const std::optional<std::string>& skippedVersion() const { return skippedVersion_; }
    // A random number that decides when this installation has its turn in a rollout.
    std::uint32_t rolloutGroup() const { return rolloutGroup_; }

    void setAutomaticallyChecks(bool value);
    void setAutomaticallyDownloads(bool value);
    void setLastCheck(Instant value);
    void setSkippedVersion(const std::string& version);

  private:
    void read();
    void write();

    StateFiles files_;
    bool automaticallyChecks_ = true;
    bool automaticallyDownloads_ = false;
    std::optional<Instant> lastCheck_;
    std::optional<std::string> skippedVersion_;
    std::uint32_t rolloutGroup_;
};

}  // namespace brimwatch
