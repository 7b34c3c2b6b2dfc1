#include "presentation/status_menu.h"

#include <gmock/gmock.h>

#include <set>

#include "card_examples.h"
#include "model_fixture.h"

namespace brimwatch {
namespace {

using Row = StatusItem::MenuRow;
using Kind = Row::Kind;
using ::testing::ElementsAre;

class StatusMenu : public test::ModelFixture {
  protected:
    // Of the kind, from top to bottom.
    std::vector<std::string> labels(Kind kind) {
        std::vector<std::string> labels;
        for (const Row& row : statusMenuRows(model(), now()))
            if (row.kind == kind) labels.push_back(row.label.toStdString());
        return labels;
    }
};

TEST_F(StatusMenu, HasTheCommandsAloneWithoutAFigure) {
    start();
    EXPECT_THAT(statusMenuRows(model(), now()),
                ElementsAre(Row{Kind::command, 1, "열기"}, Row{Kind::command, 2, "지금 새로 받기"},
                            Row{Kind::command, 3, "설정…"}, Row{Kind::command, 4, "종료"}));
}

TEST_F(StatusMenu, TellsTheFiguresOfEachAccountAboveTheCommands) {
    makeRegisteredFolder(".claude-work");
    makeRegisteredFolder(".claude-other");
    makeCodexFolder(".codex");
    writeLimits("claude-work", 60, 28);
    writeLimits("claude-other", 0, 99.5);
    writeLimits("codex-default", 12.5, 37.5);
    start();
    const std::vector<Row> rows = statusMenuRows(model(), now());
    ASSERT_EQ(rows.size(), 8U);
    EXPECT_EQ(rows[0], (Row{Kind::text, 0, "Claude · other — 주간 0% 남음 · 5시간 100% 남음"}));
    EXPECT_EQ(rows[1], (Row{Kind::text, 0, "Claude · work — 주간 72% 남음 · 5시간 40% 남음"}));
    EXPECT_EQ(rows[2], (Row{Kind::text, 0, "Codex — 주간 62% 남음 · 5시간 87% 남음"}));
    EXPECT_EQ(rows[3], (Row{Kind::separator, 0, ""}));
    EXPECT_THAT(labels(Kind::command), ElementsAre("열기", "지금 새로 받기", "설정…", "종료"));
}

TEST_F(StatusMenu, TellsWhatIsUsedWhereTheUserWantsThat) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 60, 28);
    start().setUsageDisplay(UsageDisplay::used);
    EXPECT_THAT(labels(Kind::text), ElementsAre("Claude — 주간 28% 사용 · 5시간 60% 사용"));
}

TEST_F(StatusMenu, FollowsTheOrderAndTheNamesOfTheUser) {
    makeRegisteredFolder(".claude-work");
    makeRegisteredFolder(".claude-other");
    writeLimits("claude-work", 60, 28);
    writeLimits("claude-other", 60, 28);
    start();
    model().setUsageName("claude-work", "My team");
    model().moveCard("subscription.claude-work", -1);
    EXPECT_THAT(labels(Kind::text), ElementsAre("Claude · My team — 주간 72% 남음 · 5시간 40% 남음",
                                                "Claude · other — 주간 72% 남음 · 5시간 40% 남음"));
}

TEST_F(StatusMenu, WaitsForAFigureOnceTheFiveHoursHavePassed) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 60, 28);
    start();
    advance(std::chrono::hours(3));
    EXPECT_THAT(labels(Kind::text), ElementsAre("Claude — 주간 72% 남음 · 5시간 새 값 대기"));
}

TEST_F(StatusMenu, TellsTheOneWindowThatThereIs) {
    makeRegisteredFolder(".claude-work");
    LimitsFile file = figures("claude-work", 60, 28);
    file.windows.erase("five_hour");
    writeLimits(file);
    start();
    EXPECT_THAT(labels(Kind::text), ElementsAre("Claude — 주간 72% 남음"));
}

TEST_F(StatusMenu, TellsTheFiveHoursWithoutAWeek) {
    makeRegisteredFolder(".claude-work");
    LimitsFile file = figures("claude-work", 60, 28);
    file.windows.erase("seven_day");
    writeLimits(file);
    start();
    EXPECT_THAT(labels(Kind::text), ElementsAre("Claude — 5시간 40% 남음"));
}

}  // namespace
}  // namespace brimwatch
