// An update engine that records what it is told.
#pragma once

#include <string>
#include <vector>

#include "platform/update_engine.h"

namespace brimwatch::test {

class ScriptedUpdateEngine final : public UpdateEngine {
  public:
    // What outlives the engine.
    struct Record {
        std::vector<std::string> calls;
        std::map<std::string, std::string> headers;
        std::optional<UpdateUnavailability> unavailability;
        bool automaticallyChecks = false;
        bool automaticallyDownloads = false;
    };

    explicit ScriptedUpdateEngine(Record& record) : record_(record) {}

    std::optional<UpdateUnavailability> unavailability() const override {
        return record_.unavailability;
    }
    void setHttpHeaders(std::map<std::string, std::string> headers) override {
        record_.calls.emplace_back("headers");
        record_.headers = std::move(headers);
    }
    void setUpdateCheckInterval(std::chrono::seconds interval) override {
        record_.calls.push_back("interval " + std::to_string(interval.count()));
    }
    bool automaticallyChecksForUpdates() const override { return record_.automaticallyChecks; }
    void setAutomaticallyChecksForUpdates(bool value) override {
        record_.calls.emplace_back(value ? "checks" : "checks not");
        record_.automaticallyChecks = value;
    }
    bool automaticallyDownloadsUpdates() const override { return record_.automaticallyDownloads; }
    void setAutomaticallyDownloadsUpdates(bool value) override {
        record_.calls.emplace_back(value ? "downloads" : "downloads not");
        record_.automaticallyDownloads = value;
    }
    void start() override { record_.calls.emplace_back("start"); }
    void checkForUpdates() override { record_.calls.emplace_back("check"); }
    void install() override { record_.calls.emplace_back("install"); }
    void skip() override { record_.calls.emplace_back("skip"); }
    const UpdateStatus& status() const override { return status_; }

    void become(UpdateStatus status) {
        status_ = std::move(status);
        emit statusChanged();
    }

  private:
    Record& record_;
    UpdateStatus status_;
};

}  // namespace brimwatch::test
