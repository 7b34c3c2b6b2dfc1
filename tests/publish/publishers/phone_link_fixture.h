// A link to an Android phone in the hands of a test.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "publisher_fixture.h"

namespace brimwatch::test {

class PhoneLinkFixture : public PublisherFixture {
  protected:
    using State = PhoneLinkPublisher::State;

    inline static const std::string item = "net.quillmoor.brimwatch.sync/phone-key-v1";

    PhoneLinkPublisher& start(PublishingRight right = PublishingRight::granted) {
        publisher_ = makePhoneLinkPublisher(doors(right));
        return *publisher_;
    }
    PhoneLinkPublisher& startLinked(PublishingRight right = PublishingRight::granted) {
        store(key_);
        return start(right);
    }
    PhoneLinkPublisher& publisher() { return *publisher_; }

    void store(const SymmetricKey& key) { keys_.values[item] = key.bytes(); }
    std::optional<SymmetricKey> storedKey() {
        const auto found = keys_.values.find(item);
        return found != keys_.values.end() ? SymmetricKey::fromBytes(found->second) : std::nullopt;
    }
    // That call of the key store fails from now on: it is locked.
    void failKeys(const std::string& failing) {
        keys_.answer = [failing](const std::string& call) {
            return call == failing ? std::optional(key_status::interactionNotAllowed)
                                   : std::nullopt;
        };
    }

    bool publish(double usedPercentage = 10) {
        return publisher().publish(limits(usedPercentage), now()).has_value();
    }
    // From the start to the end of a send.
    State send(double usedPercentage = 10) {
        EXPECT_TRUE(publish(usedPercentage));
        settle();
        return publisher().state();
    }
    // What became of an operation, when all has come to its end.
    std::string run(QCoro::Task<> operation) {
        const TaskResult result(std::move(operation));
        settle();
        return result.summary();
    }

    // What the phone finds.
    Macs macs() {
        const SymmetricKey key = publisher().key().value();
        return database_.snapshot(LimitsCloud::phoneRecordName(key), key).value().macs;
    }
    double sentPercentage() { return macs().at(thisMac).limits.front().sevenDay->usedPercentage; }
    static std::string text(const State& state) {
        return PhoneLinkPublisher::displayText(state, "ko");
    }

    std::unique_ptr<PhoneLinkPublisher> publisher_;
};

}  // namespace brimwatch::test
