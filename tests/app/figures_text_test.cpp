#include "app/figures_text.h"

#include <gmock/gmock.h>

#include "app/figures_printer.h"
#include "model_fixture.h"

namespace brimwatch {
namespace {

using test::ModelFixture;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using FiguresText = ModelFixture;

TEST_F(FiguresText, SaysThatThereAreNoneYet) {
    start();
    EXPECT_EQ(figuresText(model()), "no figures yet  gauge empty, weekly 1.00\n");
}

TEST_F(FiguresText, HasALineForThePanelAndOneForEachCard) {
    makeRegisteredFolder(".claude-work");
    makeRegisteredFolder(".claude-other");
    writeLimits("claude-work", 58, 37.5);
    writeLimits("claude-other", 0, 12.5);
    start();
    const std::string text = figuresText(model());
    EXPECT_THAT(text, StartsWith("74%  gauge 0.74, weekly 0.75\n  Claude · other  five hours 100% "
                                 "left until "));
    EXPECT_THAT(text, ContainsRegex("\n  Claude · work  five hours 42% left until [0-9]+\\.[0-9]+"
                                    "\\. [0-9:]+  week 62\\.5% left until [^\n]+\n$"));
}

TEST_F(FiguresText, TellsWhatIsUsedWhereTheUserWantsThat) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 58, 37.5);
    start().setUsageDisplay(UsageDisplay::used);
    EXPECT_THAT(figuresText(model()), StartsWith("38%  gauge 0.62"));
    EXPECT_THAT(figuresText(model()), HasSubstr("five hours 58% used until "));
}

TEST_F(FiguresText, NamesThePlanAndTheCredits) {
    makeCodexFolder(".codex-work");
    CodexPoller::Reading reading = test::codexReading(10, 20, now());
    reading.credits = CodexCredits{.hasCredits = true, .unlimited = true, .balance = {}};
    codex_.answerAtOnce = [reading](const auto&) { return reading; };
    start();
    const QCoro::Task<> run = model().pollCodex();
    const auto credits = model().creditText(model().limits().back());
    ASSERT_TRUE(credits);
    EXPECT_THAT(figuresText(model()), HasSubstr("  Plus  " + credits->value() + "\n"));
}

}  // namespace
}  // namespace brimwatch
