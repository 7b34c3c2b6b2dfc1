// The loop that asks Codex, and the agent that it takes down.

#include <gmock/gmock.h>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HelperModelCodexLoop : public test::AccountsFixture {
  protected:
    // Lets time pass in small steps, so that refreshes and polls come as they would.
    void expectNoQuestionFor(std::chrono::seconds duration) {
        const std::size_t before = codex_.questions().size();
        advance(duration);
        EXPECT_EQ(codex_.questions().size(), before);
    }
};

TEST_F(HelperModelCodexLoop, RunsOnlyWithSystemServices) {
    start();
    advance(24h);
    EXPECT_THAT(askedKeys(), IsEmpty());
    startWithServices();
    settle();
    EXPECT_THAT(askedKeys(), ElementsAre("default"));
}

TEST_F(HelperModelCodexLoop, PausesForFiveMinutesFromTheEndOfTheWholeRun) {
    makeCodexFolder(".codex-work");
    startWithServices();
    settle();
    expectNoQuestionFor(15s);
    codex_.answer(test::codexFailure(Kind::timedOut));
    ASSERT_THAT(askedKeys(), ElementsAre("default", "work"));
    expectNoQuestionFor(400s);
    answer(20);
    expectNoQuestionFor(299s);
    advance(1s);
    EXPECT_THAT(askedKeys(), ElementsAre("default", "work", "default"));
}

TEST_F(HelperModelCodexLoop, GoesOnWhileCodexIsOffAndIsNotAskedWhenItIsSwitchedOn) {
    defaults_.setBoolean("codexEnabled", false);
    startWithServices();
    advance(450s);
    EXPECT_THAT(askedKeys(), IsEmpty());
    model().setCodexEnabled(true);
    expectNoQuestionFor(149s);
    advance(1s);
    EXPECT_THAT(askedKeys(), ElementsAre("default"));
}

TEST_F(HelperModelCodexLoop, GoesOnWithoutAnExecutable) {
    codex_.installed.reset();
    startWithServices();
    settle();
    EXPECT_NE(model().codexStatus(), std::nullopt);
    codex_.installed = "/usr/bin/codex";
    expectNoQuestionFor(299s);
    advance(1s);
    ASSERT_THAT(askedKeys(), ElementsAre("default"));
    answer(10);
    EXPECT_EQ(model().codexStatus(), std::nullopt);
}

TEST_F(HelperModelCodexLoop, IsNotMovedByARunInBetween) {
    startWithServices();
    settle();
    answer(10);
    advance(200s);
    model().connectCodex();
    settle();
    ASSERT_EQ(codex_.questions().size(), 2U);
    answer(20);
    expectNoQuestionFor(99s);
    advance(1s);
    EXPECT_EQ(codex_.questions().size(), 3U);
}

TEST_F(HelperModelCodexLoop, APassThatMeetsARunAsksForOneMoreAndPausesAgain) {
    startWithServices();
    settle();
    answer(10);
    model().connectCodex();
    settle();
    advance(301s);
    EXPECT_TRUE(model().codexPollRequested());
    EXPECT_EQ(codex_.questions().size(), 2U);
    answer(20);
    settle();
    ASSERT_EQ(codex_.questions().size(), 3U);
    answer(30);
    expectNoQuestionFor(298s);
    advance(1s);
    EXPECT_EQ(codex_.questions().size(), 4U);
}

TEST_F(HelperModelCodexLoop, EndsWhenTheProgramEnds) {
    startWithServices();
    settle();
    answer(10);
    time_.cancelSleeps();
    EXPECT_EQ(time_.sleeperCount(), 0U);
    advance(1h);
    EXPECT_EQ(codex_.questions().size(), 1U);
}

TEST_F(HelperModelCodexLoop, DoesNotKeepTheModelAlive) {
    startWithServices();
    settle();
    answer(10);
    const QPointer<HelperModel> watched(&model());
    model_.reset();
    EXPECT_TRUE(watched.isNull());
    advance(24h);
    EXPECT_EQ(time_.sleeperCount(), 0U);
    EXPECT_EQ(codex_.questions().size(), 1U);
}

// The stopper that a test makes sees whether the definition is still there.
class Agent final : public AgentStopper {
  public:
    void stop(const std::string& definition) override {
        stopped.push_back(definition);
        wasThere = test::exists(definition);
    }
    std::vector<std::string> stopped;
    bool wasThere = false;
};

class HelperModelOldAgent : public test::AccountsFixture {
  protected:
    void startWithAgent() {
        HelperModel::Surroundings around = surroundings();
        around.systemServices.emplace(HelperModel::SystemServices{
            services_.watch, services_.broadcast, services_.login, agent_});
        start(std::move(around));
    }
    void putAgent() { test::writeFile(definition_, "<plist/>"); }

    std::string definition_ = path("Library/LaunchAgents/net.quillmoor.brimwatch.codex.plist");
    Agent agent_;
};

TEST_F(HelperModelOldAgent, IsStoppedAndThenDeleted) {
    startWithAgent();
    putAgent();
    model().removeOldLaunchAgent();
    EXPECT_THAT(agent_.stopped, ElementsAre(definition_));
    EXPECT_TRUE(agent_.wasThere);
    EXPECT_FALSE(test::exists(definition_));
}

TEST_F(HelperModelOldAgent, IsLeftAloneWhereThereIsNone) {
    startWithAgent();
    model().removeOldLaunchAgent();
    EXPECT_THAT(agent_.stopped, IsEmpty());
}

TEST_F(HelperModelOldAgent, GoesAtTheStartOfEachPoll) {
    putAgent();
    startWithAgent();
    settle();
    EXPECT_FALSE(test::exists(definition_)) << "before the first answer";
    EXPECT_TRUE(codex_.isAsking());
    answer(10);
    putAgent();
    advance(299s);
    EXPECT_TRUE(test::exists(definition_));
    advance(1s);
    EXPECT_FALSE(test::exists(definition_));
    EXPECT_THAT(agent_.stopped, ElementsAre(definition_, definition_));
}

TEST_F(HelperModelOldAgent, GoesAlsoWithoutAnExecutable) {
    codex_.installed.reset();
    putAgent();
    startWithAgent();
    settle();
    EXPECT_FALSE(test::exists(definition_));
}

TEST_F(HelperModelOldAgent, StaysWhileCodexIsOff) {
    defaults_.setBoolean("codexEnabled", false);
    putAgent();
    startWithAgent();
    advance(300s);
    EXPECT_THAT(agent_.stopped, IsEmpty());
    EXPECT_TRUE(test::exists(definition_));
}

TEST_F(HelperModelOldAgent, StaysWithoutSystemServices) {
    start();
    putAgent();
    poll();
    EXPECT_TRUE(test::exists(definition_));
}

TEST_F(HelperModelOldAgent, ThatCanNotBeDeletedIsNoFailureAndIsTriedAgain) {
    startWithAgent();
    putAgent();
    files_.failEvery("remove " + definition_, std::errc::permission_denied);
    settle();
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_TRUE(test::exists(definition_));
    ASSERT_TRUE(codex_.isAsking());
    answer(10);
    files_.failNothing();
    advance(300s);
    EXPECT_EQ(agent_.stopped.size(), 2U);
    EXPECT_FALSE(test::exists(definition_));
}

TEST_F(HelperModelOldAgent, IsLookedForBelowTheHome) {
    HelperModel::Surroundings around = surroundingsWithServices();
    around.home = folder_.file("other");
    putAgent();
    start(std::move(around));
    settle();
    EXPECT_TRUE(test::exists(definition_));
    EXPECT_THAT(services_.agents.stopped, IsEmpty());
}

}  // namespace
}  // namespace brimwatch
