#include "core/helper_model.h"

#include <gmock/gmock.h>

#include "model_fixture.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::ModelFixture;
using ::testing::ElementsAre;

using HelperModelRun = ModelFixture;

TEST_F(HelperModelRun, AFigureOfAStatusLineRunReachesTheCardsByItself) {
    makeRegisteredFolder(".claude-work");
    startWithServices();
    time_.settle();
    EXPECT_TRUE(shownIds().empty());
    writeLimits("claude-work", 10, 40);
    services_.watch.changed();
    advance(299ms);
    EXPECT_TRUE(shownIds().empty());
    advance(1ms);
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
    EXPECT_EQ(model().menuTitle(), "60%");
}

TEST_F(HelperModelRun, CodexIsAskedAtTheStartAndFiveMinutesAfterEachAnswer) {
    makeCodexFolder(".codex");
    startWithServices();
    EXPECT_FALSE(codex_.isAsking());
    time_.settle();
    ASSERT_TRUE(codex_.isAsking());
    advance(10s);
    codex_.answer(test::codexReading(20, 30, now()));
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
    EXPECT_EQ(shownWeekly("codex-default"), 30);
    advance(299s);
    EXPECT_FALSE(codex_.isAsking());
    advance(1s);
    EXPECT_TRUE(codex_.isAsking());
}

TEST_F(HelperModelRun, AModelThatGoesAwayDuringAQuestionLeavesItsTasksToEnd) {
    makeCodexFolder(".codex");
    startWithServices();
    time_.settle();
    ASSERT_TRUE(codex_.isAsking());
    services_.watch.changed();
    model_.reset();
    codex_.answer(test::codexReading(20, 30, now()));
    services_.watch.changed();
    services_.broadcast.received();
    advance(1h);
    EXPECT_EQ(time_.sleeperCount(), 0U);
    EXPECT_FALSE(test::exists(limitsFile("codex-default")));
}

}  // namespace
}  // namespace brimwatch
