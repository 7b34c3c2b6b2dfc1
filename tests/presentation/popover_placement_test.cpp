#include "presentation/views/popover_placement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "harness/random.h"

inline void PrintTo(const QPoint& point, std::ostream* out) {
    *out << point.x() << ", " << point.y();
}

namespace brimwatch {
namespace {

constexpr QSize popover(270, 400);
constexpr QRect fullHd(0, 0, 1920, 1080);

struct Row {
    const char* situation;
    QPoint click;
    std::vector<ScreenPlace> screens;
    QPoint place;
};

const ScreenPlace topPanel{fullHd, {0, 28, 1920, 1052}};
const ScreenPlace bottomPanel{fullHd, {0, 0, 1920, 1040}};
const ScreenPlace leftPanel{fullHd, {48, 0, 1872, 1080}};
const ScreenPlace rightPanel{fullHd, {0, 0, 1872, 1080}};
const ScreenPlace noPanel{fullHd, fullHd};
const ScreenPlace leftScreen{{-1280, -200, 1280, 1024}, {-1280, -170, 1280, 994}};
const ScreenPlace screenAbove{{0, -900, 1440, 900}, {0, -900, 1440, 860}};
const ScreenPlace dense{{0, 0, 1920, 1080}, {0, 30, 1920, 1050}, 2};
const ScreenPlace denseToTheRight{{1920, 0, 1280, 720}, {1920, 0, 1280, 690}, 1.5};
const ScreenPlace low{{0, 0, 800, 300}, {0, 24, 800, 276}};

TEST(PopoverPlacement, ComesBesideWhatWasClicked) {
    const Row rows[] = {
        {"below a top panel", {960, 14}, {topPanel}, {825, 34}},
        {"above a bottom panel", {960, 1060}, {bottomPanel}, {825, 634}},
        {"beside a left panel", {24, 500}, {leftPanel}, {54, 300}},
        {"beside a right panel", {1900, 500}, {rightPanel}, {1596, 300}},
        {"at the end of a top panel", {1915, 14}, {topPanel}, {1644, 34}},
        {"at the start of a top panel", {2, 14}, {topPanel}, {6, 34}},
        {"at the foot of a left panel", {24, 1078}, {leftPanel}, {54, 674}},
        {"at the head of a right panel", {1900, 2}, {rightPanel}, {1596, 6}},
        {"below a click with no panel", {960, 20}, {noPanel}, {825, 26}},
        {"above a click with no panel", {960, 1070}, {noPanel}, {825, 664}},
        {"in the corner of a screen", {1919, 1079}, {noPanel}, {1644, 673}},
        {"on a screen of negative coordinates", {-100, -190}, {noPanel, leftScreen}, {-276, -164}},
        {"on a screen above", {700, -20}, {noPanel, screenAbove}, {565, -446}},
        {"on the second screen's own panel", {960, 14}, {leftScreen, topPanel}, {825, 34}},
        {"on a dense screen", {1920, 30}, {dense}, {825, 36}},
        {"at the end of a dense screen", {3830, 30}, {dense}, {1644, 36}},
        {"on a dense screen beside a usual one",
         {1920 + 960, 1060},
         {noPanel, denseToTheRight},
         {1920 + 640 - 135, 284}},
        {"beyond all screens", {960, 1200}, {bottomPanel}, {825, 634}},
        {"on a screen that is too low", {400, 10}, {low}, {265, 30}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(popoverPlace(row.click, popover, row.screens), row.place) << row.situation;
}

TEST(PopoverPlacement, NeverLeavesWhatPanelsLeave) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::vector<ScreenPlace> screens = {topPanel, leftScreen, screenAbove, denseToTheRight};
    for (int round = 0; round < 2000; ++round) {
        const QPoint click(static_cast<int>(random.between(-1500, 4500)),
                           static_cast<int>(random.between(-1100, 1500)));
        const QSize size(static_cast<int>(random.between(100, 400)),
                         static_cast<int>(random.between(60, 600)));
        const QRect popoverRect(popoverPlace(click, size, screens), size);
        const bool isOnOne = std::any_of(
            screens.begin(), screens.end(),
            [&](const ScreenPlace& screen) { return screen.available.contains(popoverRect); });
        EXPECT_TRUE(isOnOne) << click.x() << ", " << click.y();
    }
}

}  // namespace
}  // namespace brimwatch
