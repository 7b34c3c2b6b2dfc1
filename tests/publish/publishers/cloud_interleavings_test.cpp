// Whatever happens to the publisher for iPhones at whatever point at which it waits.

#include <gmock/gmock.h>

#include <array>

#include "core/log_capture.h"
#include "publisher_world.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using Database = test::ScriptedRecordDatabase;
using State = CloudPublisher::State;

const SymmetricKey& key() {
    static const SymmetricKey key = test::keyFilledWith('k');
    return key;
}

const std::string& recordName() {
    static const std::string name = LimitsCloud::recordName(key());
    return name;
}

class World : public test::PublisherWorld {
  public:
    explicit World(Database::Effect effect) : PublisherWorld(effect) {
        keys.values["net.quillmoor.brimwatch.sync/limits-key-v1"] = key().bytes();
        putOther(recordName(), key());
        publisher = makeCloudPublisher(doors());
    }

    void publish() {
        if (publisher) publisher->publish(newLimits(), time.now());
    }
    void switchOn() {
        if (publisher) publisher->switchOn();
    }
    void switchOff() {
        if (publisher) begin(publisher->switchOff());
    }
    void letMinutesPass() {
        time.advance(10min);
        publish();
    }
    void destroy() {
        if (!publisher) return;
        const bool isRemoving = publisher->isRemoving() && !publisher->isSending();
        publisher.reset();
        if (!isRemoving) callsAtTheEnd = database.calls().size();
    }
    void writeElsewhere() { putOther(recordName(), key()); }
    void fail() { failWith(cloud_error_code::networkFailure); }
    void failInConflict() { failWith(cloud_error_code::serverRecordChanged); }

    // At each point.
    void checkPoint() const {
        // A send and a removal at the same time would be two calls.
        EXPECT_LE(database.openCount(), 1U);
        EXPECT_TRUE(hasOther(recordName(), key()));
        if (!publisher) return;
        EXPECT_EQ(std::holds_alternative<CloudPublisher::Off>(publisher->state()),
                  !publisher->isEnabled());
        EXPECT_TRUE(!publisher->isRemoving() || !publisher->isEnabled());
    }

    // Once nothing waits any more.
    void checkEnd() {
        EXPECT_TRUE(areTasksOver());
        if (callsAtTheEnd) {
            EXPECT_EQ(database.calls().size(), *callsAtTheEnd);
        }
        if (!publisher) return;
        EXPECT_FALSE(publisher->isSending());
        EXPECT_FALSE(publisher->isRemoving());
        const std::optional<ContentDigest> sent = publisher->schedule().sentDigest;
        if (sent && !hasFailed) {
            EXPECT_EQ(share(recordName(), key()), sent);
        }
        if (publisher->isEnabled()) return checkThatItStillSends();
        EXPECT_EQ(publisher->schedule(), PublishSchedule());
        EXPECT_EQ(defaults.stored("cloudEnabled"), "false");
        if (tasks.back().succeeded()) {
            EXPECT_EQ(share(recordName(), key()), std::nullopt);
        }
    }

    std::unique_ptr<CloudPublisher> publisher;
    std::optional<std::size_t> callsAtTheEnd;
    // The server may have done what it could not tell of.
    bool hasFailed = false;

  private:
    void failWith(int code) {
        if (!database.isAsked()) return;
        hasFailed = true;
        database.fail(test::cloudError(code));
    }
    void checkThatItStillSends() {
        time.advance(1h);
        const Limits limits = newLimits();
        EXPECT_TRUE(publisher->publish(limits, time.now()));
        while (step()) {
        }
        EXPECT_EQ(share(recordName(), key()), PublishSchedule::contentDigest(limits));
        EXPECT_TRUE(std::holds_alternative<publication::Sent>(publisher->state()));
    }
};

using Action = void (World::*)();

constexpr std::array<Action, 8> actions = {
    &World::publish, &World::switchOn,       &World::switchOff, &World::letMinutesPass,
    &World::destroy, &World::writeElsewhere, &World::fail,      &World::failInConflict};

void play(World& world, const test::Interleaving& order) {
    bool isOver = false;
    for (std::size_t point = 0; !isOver; ++point) {
        world.checkPoint();
        if (point == order.firstPoint) (world.*actions.at(order.first))();
        if (point == order.secondPoint) (world.*actions.at(order.second))();
        world.checkPoint();
        isOver = !world.step() && point >= order.secondPoint;
    }
    world.checkEnd();
}

class CloudInterleavings : public ::testing::TestWithParam<Database::Effect> {
  protected:
    void playAll(Action begin, std::size_t pointCount) {
        const test::LogCapture quiet;
        test::forEachInterleaving(actions.size(), pointCount, [&](const test::Interleaving& order) {
            if (HasFailure()) return;
            SCOPED_TRACE(::testing::Message() << order.first << " at " << order.firstPoint << ", "
                                              << order.second << " at " << order.secondPoint);
            World world(GetParam());
            (world.*begin)();
            play(world, order);
            quiet.messages().clear();
        });
    }
};

TEST_P(CloudInterleavings, OfASendLeaveEverythingInOrder) {
    playAll(&World::publish, 9);
}

TEST_P(CloudInterleavings, OfARemovalLeaveEverythingInOrder) {
    playAll(&World::switchOff, 9);
}

INSTANTIATE_TEST_SUITE_P(Server, CloudInterleavings,
                         ::testing::Values(Database::Effect::atTheCall,
                                           Database::Effect::atTheAnswer));

}  // namespace
}  // namespace brimwatch
