// Whatever happens to a link to an Android phone at whatever point at which it waits.

#include <gmock/gmock.h>

#include <array>

#include "core/log_capture.h"
#include "publisher_world.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using Database = test::ScriptedRecordDatabase;

const std::string item = "net.quillmoor.brimwatch.sync/phone-key-v1";

class World : public test::PublisherWorld {
  public:
    explicit World(Database::Effect effect) : PublisherWorld(effect) {
        keys.values[item] = test::keyFilledWith('k').bytes();
        publisher = makePhoneLinkPublisher(doors());
        database.answers = Database::Answers::atOnce;
        publish();
        while (step()) {
        }
        database.answers = Database::Answers::whenTold;
        database.forgetCalls();
        noteKey();
    }

    void publish() {
        if (publisher) publisher->publish(newLimits(), time.now());
    }
    void letMinutesPass() {
        time.advance(10min);
        publish();
    }
    void showLink() {
        if (publisher) publisher->showLink();
    }
    void rotate() {
        if (publisher) begin(publisher->rotate());
    }
    void disconnect() {
        if (publisher) begin(publisher->disconnect());
    }
    void pause() {
        if (publisher) pauses.emplace_back(publisher->pause());
    }
    void refresh() {
        if (publisher && !publisher->isChanging()) publisher->refreshKey();
    }
    void destroy() { publisher.reset(); }
    void fail() {
        if (!database.isAsked()) return;
        hasFailed = true;
        database.fail(test::cloudError(cloud_error_code::networkFailure));
    }

    // At each point.
    void checkPoint() {
        if (!publisher) return;
        noteKey();
        EXPECT_EQ(publisher->isPaused(), defaults.stored("phoneLinkPaused") == "true");
        EXPECT_TRUE(publisher->key() || !isState<publication::Sent>());
    }

    // Once nothing waits any more.
    void checkEnd() {
        EXPECT_TRUE(areTasksOver());
        for (const test::TaskResult& pause : pauses)
            EXPECT_TRUE(pause.isOver());
        if (!publisher) return;
        EXPECT_FALSE(publisher->isSending());
        EXPECT_FALSE(publisher->isChanging());
        EXPECT_EQ(publisher->key().has_value(), keys.values.contains(item));
        EXPECT_EQ(isState<PhoneLinkPublisher::NotLinked>(), !publisher->key());
        EXPECT_EQ(isState<PhoneLinkPublisher::Paused>(), publisher->key() && publisher->isPaused());
        checkFormerKeys();
        if (!publisher->key()) return;
        if (publisher->isPaused()) return checkPaused();
        const std::optional<ContentDigest> sent = publisher->schedule().sentDigest;
        if (sent && !hasFailed) {
            EXPECT_EQ(shareOf(*publisher->key()), sent);
        }
        checkThatItStillSends();
    }

    std::unique_ptr<PhoneLinkPublisher> publisher;
    std::vector<test::TaskResult> pauses;
    std::vector<SymmetricKey> seenKeys;
    // The server may have done what it could not tell of.
    bool hasFailed = false;

  private:
    template <class State>
    bool isState() const {
        return std::holds_alternative<State>(publisher->state());
    }
    std::optional<ContentDigest> shareOf(const SymmetricKey& key) const {
        return share(LimitsCloud::phoneRecordName(key), key);
    }
    void noteKey() {
        if (!publisher->key()) return;
        if (seenKeys.empty() || seenKeys.back() != *publisher->key()) {
            seenKeys.push_back(*publisher->key());
        }
    }
    // No record outlives its key, but for one that could not be deleted.
    void checkFormerKeys() const {
        if (hasFailed) return;
        for (const SymmetricKey& former : seenKeys) {
            if (former == publisher->key()) continue;
            EXPECT_FALSE(database.records.contains(LimitsCloud::phoneRecordName(former)));
        }
    }
    void checkPaused() const {
        EXPECT_EQ(publisher->schedule(), PublishSchedule());
        if (pauses.back().succeeded()) {
            EXPECT_EQ(shareOf(*publisher->key()), std::nullopt);
        }
    }
    void checkThatItStillSends() {
        time.advance(1h);
        const Limits limits = newLimits();
        EXPECT_TRUE(publisher->publish(limits, time.now()));
        while (step()) {
        }
        EXPECT_EQ(shareOf(*publisher->key()), PublishSchedule::contentDigest(limits));
        EXPECT_TRUE(isState<publication::Sent>());
    }
};

using Action = void (World::*)();

constexpr std::array<Action, 9> actions = {
    &World::publish, &World::letMinutesPass, &World::showLink, &World::rotate, &World::disconnect,
    &World::pause,   &World::refresh,        &World::destroy,  &World::fail};

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

class PhoneLinkInterleavings : public ::testing::TestWithParam<Database::Effect> {
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

TEST_P(PhoneLinkInterleavings, OfASendLeaveEverythingInOrder) {
    playAll(&World::letMinutesPass, 7);
}

TEST_P(PhoneLinkInterleavings, OfARotationLeaveEverythingInOrder) {
    playAll(&World::rotate, 8);
}

TEST_P(PhoneLinkInterleavings, OfADisconnectionLeaveEverythingInOrder) {
    playAll(&World::disconnect, 7);
}

TEST_P(PhoneLinkInterleavings, OfAPauseLeaveEverythingInOrder) {
    playAll(&World::pause, 8);
}

INSTANTIATE_TEST_SUITE_P(Server, PhoneLinkInterleavings,
                         ::testing::Values(Database::Effect::atTheCall,
                                           Database::Effect::atTheAnswer));

}  // namespace
}  // namespace brimwatch
