#include "presentation/menu_bar_renderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "icon_fixture.h"
#include "limits/allocation_count.h"

namespace brimwatch {
namespace {

using test::artworkOf;
using test::CountedRenderer;
using test::LargeFrame;
using test::pi;
using test::solidRocket;

const QColor teal(47, 181, 165);
const QColor track(0, 0, 0, 69);  // 0.27 * 255 = 68.85
const QColor nothing(0, 0, 0, 0);

// Shaken so far that neither rocket nor halo is in the picture.
MenuBarIcon ringAlone(double remaining, double angle = 0) {
    return {remaining, angle, {.radial = 1000, .angle = 0}};
}

QSize sizeAt(double scale) {
    MenuBarRenderer renderer(solidRocket());
    const QImage* picture = renderer.render({0.5, 0, {}}, Qt::black, scale);
    return picture == nullptr ? QSize() : picture->size();
}

TEST(MenuBarRenderer, PaintsTwentyPointsSquareAtEveryScale) {
    EXPECT_EQ(sizeAt(1), QSize(20, 20));
    EXPECT_EQ(sizeAt(1.5), QSize(30, 30));
    EXPECT_EQ(sizeAt(2), QSize(40, 40));
    EXPECT_EQ(sizeAt(3), QSize(60, 60));
    EXPECT_EQ(sizeAt(1.33), QSize(27, 27));
}

TEST(MenuBarRenderer, PaintsNothingAtAScaleThatIsNone) {
    for (const double scale : {0.0, -1.0, 0.02, 1e9, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(sizeAt(scale), QSize()) << scale;
    }
}

TEST(MenuBarRenderer, PaintsWithAnInkThatWasMadeWhereThereWasNoScale) {
    const MenuBarIcon icon{.remaining = 0.5, .angle = 1, .shake = {}};
    MenuBarRenderer renderer(solidRocket());
    ASSERT_EQ(renderer.render(icon, Qt::black, 0), nullptr);
    const QImage* picture = renderer.render(icon, Qt::black, 2);
    ASSERT_NE(picture, nullptr);
    MenuBarRenderer fresh(solidRocket());
    EXPECT_EQ(*picture, *fresh.render(icon, Qt::black, 2));
}

TEST(MenuBarRenderer, TheTrackIsTheInkAtTwentySevenPercent) {
    for (const double angle : {0.1, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0})
        EXPECT_EQ(LargeFrame(solidRocket(), ringAlone(0)).onRing(angle), track) << angle;
    const LargeFrame red(solidRocket(), ringAlone(0), QColor(255, 0, 0, 200));
    EXPECT_EQ(red.onRing(1), QColor(255, 0, 0, 69));
}

TEST(MenuBarRenderer, TheTrackIsAsWideAsItsLine) {
    const LargeFrame frame(solidRocket(), ringAlone(0));
    for (const double angle : {0.3, 1.9, 3.5, 5.1}) {
        EXPECT_EQ(frame.onRing(angle, 6.2816 - 1.53 - 0.15), nothing);
        EXPECT_EQ(frame.onRing(angle, 6.2816 - 1.53 + 0.15), track);
        EXPECT_EQ(frame.onRing(angle, 6.2816 + 1.53 - 0.15), track);
        EXPECT_EQ(frame.onRing(angle, 6.2816 + 1.53 + 0.15), nothing);
    }
    EXPECT_EQ(frame.at(10, 10), nothing);
    EXPECT_EQ(frame.at(0.05, 0.05), nothing);
}

TEST(MenuBarRenderer, TheArcStretchesBackFromItsHead) {
    // A quarter that ends at three o'clock begins at twelve.
    const LargeFrame frame(solidRocket(), ringAlone(0.25, pi / 2));
    for (const double angle : {0.0, 0.4, 0.8, 1.2, pi / 2})
        EXPECT_EQ(frame.onRing(angle), teal) << angle;
    for (const double angle : {2.0, 3.0, 4.0, 5.0, 5.9})
        EXPECT_EQ(frame.onRing(angle), track) << angle;
}

TEST(MenuBarRenderer, TheArcHasRoundEnds) {
    const LargeFrame frame(solidRocket(), ringAlone(0.25, pi / 2));
    const double cap = 1.53 / 6.2816;
    EXPECT_EQ(frame.onRing(-cap + 0.03), teal);
    EXPECT_EQ(frame.onRing(-cap - 0.03), track);
    EXPECT_EQ(frame.onRing(pi / 2 + cap - 0.03), teal);
    EXPECT_EQ(frame.onRing(pi / 2 + cap + 0.03), track);
    // Near its tip a round end is narrow.
    EXPECT_EQ(frame.onRing(-cap + 0.03, 6.2816 + 1.2), track);
    EXPECT_EQ(frame.onRing(0.1, 6.2816 + 1.2), teal);
}

TEST(MenuBarRenderer, AnEmptyRingHasNoArc) {
    for (const double remaining : {0.0, -0.5, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(remainingArc({remaining, 1, {}})) << remaining;
        const LargeFrame frame(solidRocket(), ringAlone(remaining));
        for (const double angle : {0.0, 1.5, 3.0, 4.5})
            EXPECT_EQ(frame.onRing(angle), track);
    }
}

TEST(MenuBarRenderer, TheRingClosesAtNinetyNinePointNine) {
    EXPECT_EQ(remainingArc({0.999, 0, {}}), (RingArc{0, 2 * pi}));
    EXPECT_EQ(remainingArc({1, 0, {}}), (RingArc{0, 2 * pi}));
    EXPECT_EQ(remainingArc({7, 0, {}}), (RingArc{0, 2 * pi}));
    const RingArc almost = remainingArc({0.998, 3, {}}).value();
    EXPECT_DOUBLE_EQ(almost.head, 3);
    EXPECT_DOUBLE_EQ(almost.length, 0.998 * 2 * pi);

    EXPECT_LT(remainingArc({0.9989, 3, {}}).value().length, 2 * pi);

    const QImage closed = LargeFrame(solidRocket(), ringAlone(0.999, 2)).picture;
    EXPECT_EQ(closed, LargeFrame(solidRocket(), ringAlone(1, 2)).picture);
    EXPECT_EQ(closed, LargeFrame(solidRocket(), ringAlone(1, 5)).picture);
}

TEST(MenuBarRenderer, BelowThatTheArcHasAGapBeforeItsHead) {
    // A tenth of the ring, of which the two round ends take 0.49 of its 0.63.
    const LargeFrame frame(solidRocket(), ringAlone(0.9, pi / 2));
    EXPECT_EQ(frame.onRing(pi / 2 + 0.31), track);
    EXPECT_EQ(frame.onRing(pi / 2 - 0.1), teal);
    EXPECT_EQ(frame.onRing(pi / 2 + 0.72), teal);
}

TEST(MenuBarRenderer, TheRocketLiesOnTheHeadAlongTheRing) {
    // 8.28 long and 4.14 wide, round (10, 3.7184).
    const QColor ink(10, 20, 30);
    const LargeFrame top(solidRocket(), {0.5, 0, {}}, ink);
    for (const double x : {6.0, 10.0, 14.0}) {
        for (const double y : {1.8, 3.7, 5.6})
            EXPECT_EQ(top.at(x, y), ink) << x << ' ' << y;
    }
    EXPECT_EQ(top.at(10, 1.5), nothing);
    EXPECT_EQ(top.at(14.4, 3.7), nothing);

    const LargeFrame right(solidRocket(), {0.5, pi / 2, {}}, ink);
    EXPECT_EQ(right.at(16.3, 6.0), ink);
    EXPECT_EQ(right.at(16.3, 14.0), ink);
    EXPECT_EQ(right.at(14.0, 10), nothing);
}

TEST(MenuBarRenderer, TheRocketFliesClockwiseWithItsNoseAhead) {
    const QImage onlyNose = artworkOf({40, 80}, [](int, int y) { return y < 40; });
    const MenuBarRocket rocket = makeMenuBarRocket({onlyNose}).value();
    const LargeFrame top(rocket, {0, 0, {}});
    EXPECT_EQ(top.at(12, 3.7), QColor(Qt::black));
    EXPECT_NE(top.at(8, 3.7), QColor(Qt::black));
    const LargeFrame right(rocket, {0, pi / 2, {}});
    EXPECT_EQ(right.at(16.3, 12), QColor(Qt::black));
    EXPECT_NE(right.at(16.3, 8), QColor(Qt::black));
}

TEST(MenuBarRenderer, TheRocketShowsItsRightSideOnTheInside) {
    const QImage rightHalf = artworkOf({40, 80}, [](int x, int) { return x >= 20; });
    const LargeFrame top(makeMenuBarRocket({rightHalf}).value(), {0, 0, {}});
    EXPECT_EQ(top.at(10, 4.7), QColor(Qt::black));
    EXPECT_NE(top.at(10, 2.7), QColor(Qt::black));
}

TEST(MenuBarRenderer, TheRingIsCutAwayRoundTheRocket) {
    const LargeFrame frame(solidRocket(), {1, 0, {}}, Qt::black);
    // Half a point before the rocket, where the halo is solid, and 2 points from its corner.
    EXPECT_EQ(frame.at(14.6, 5.72), nothing);
    EXPECT_EQ(frame.at(15.6, 7.15), teal);
}

TEST(MenuBarRenderer, TheRingDoesNotShineThroughAPorthole) {
    const QImage withPorthole =
        artworkOf({40, 80}, [](int x, int y) { return std::hypot(x - 19.5, y - 39.5) > 8; });
    const LargeFrame frame(makeMenuBarRocket({withPorthole}).value(), {1, 0, {}});
    EXPECT_EQ(frame.at(10, 3.7), nothing);
    EXPECT_EQ(frame.at(11.5, 3.7), QColor(Qt::black));
}

TEST(MenuBarRenderer, AShakeMovesTheRocketAlone) {
    const LargeFrame outward(solidRocket(), {0.25, pi, {.radial = 0.9, .angle = 0}});
    EXPECT_EQ(outward.at(10, 10 + 6.2816 + 0.9 + 2.0), QColor(Qt::black));
    EXPECT_EQ(outward.at(10, 10 + 6.2816 + 0.9 - 2.2), nothing);

    const double nineDegrees = 9 * pi / 180;
    const LargeFrame onward(solidRocket(), {0.25, pi, {.radial = 0, .angle = nineDegrees}});
    const QPointF nose(10 + 6.2816 * std::sin(pi + nineDegrees) - 4.0 * std::cos(nineDegrees),
                       10 - 6.2816 * std::cos(pi + nineDegrees) - 4.0 * std::sin(nineDegrees));
    EXPECT_EQ(onward.at(nose.x(), nose.y()), QColor(Qt::black));

    for (const LargeFrame* frame : {&outward, &onward}) {
        const double cap = 1.53 / 6.2816;
        EXPECT_EQ(frame->onRing(pi / 2 - cap + 0.03), teal);
        EXPECT_EQ(frame->onRing(pi / 2 - cap - 0.03), track);
    }
}

TEST(MenuBarRenderer, EachFrameStartsFromNothing) {
    MenuBarRenderer renderer(solidRocket());
    const QImage first = renderer.render({0.3, 1, {}}, Qt::black, 1.33)->copy();
    for (int frame = 0; frame < 50; ++frame)
        renderer.render({0.8, frame * 0.1, {.radial = 2, .angle = 0}}, Qt::black, 1.33);
    EXPECT_EQ(*renderer.render({0.3, 1, {}}, Qt::black, 1.33), first);
}

TEST(MenuBarRenderer, ATintKeepsTheAlphaAndNothingElse) {
    QImage artwork(2, 1, QImage::Format_ARGB32_Premultiplied);
    artwork.setPixelColor(0, 0, QColor(200, 30, 90, 128));
    artwork.setPixelColor(1, 0, QColor(255, 255, 255, 255));
    const QImage tint = tinted(artwork, QColor(255, 0, 0));
    EXPECT_EQ(tint.pixel(0, 0), qRgba(128, 0, 0, 128));
    EXPECT_EQ(tint.pixel(1, 0), qRgba(255, 0, 0, 255));
    EXPECT_NEAR(qAlpha(tinted(artwork, QColor(255, 0, 0, 128)).pixel(0, 0)), 64, 1);
}

TEST(MenuBarRenderer, FramesAfterTheFirstMakeNothing) {
    CountedRenderer counted;
    for (int frame = 0; frame < 100; ++frame)
        ASSERT_TRUE(counted.renderer.render({0.7, frame * 0.2, {}}, Qt::black, 2));
    EXPECT_EQ(counted.bitmapCount, 1);
    EXPECT_EQ(counted.tintCount, 1);
}

TEST(MenuBarRenderer, FramesAfterTheFirstAskForNoMemory) {
    MenuBarRenderer renderer(sharedRocket().value());
    const auto renderTurn = [&renderer] {
        for (int frame = 0; frame < 100; ++frame)
            renderer.render({0.01 * frame, frame * 0.0628, {0.3, 0.1}}, Qt::black, 2);
    };
    renderTurn();
    const std::size_t before = test::allocationCount();
    const uchar* pixels = renderer.render({0.5, 1, {}}, Qt::black, 2)->constBits();
    renderTurn();
    EXPECT_EQ(test::allocationCount(), before);
    EXPECT_EQ(renderer.render({0.5, 1, {}}, Qt::black, 2)->constBits(), pixels);
}

TEST(MenuBarRenderer, AKeptFrameStaysAsItWas) {
    MenuBarRenderer renderer(solidRocket());
    const QImage kept = *renderer.render({0.7, 1, {}}, Qt::black, 2);
    const QImage asItWas = kept.copy();
    renderer.render({0.2, 3, {}}, Qt::black, 2);
    EXPECT_EQ(kept, asItWas);
}

TEST(MenuBarRenderer, LightDarkAndBackTintsTwice) {
    CountedRenderer counted;
    const QImage light = counted.renderer.render({0.7, 1, {}}, Qt::black, 2)->copy();
    const QImage dark = counted.renderer.render({0.7, 1, {}}, Qt::white, 2)->copy();
    EXPECT_NE(light, dark);
    EXPECT_EQ(*counted.renderer.render({0.7, 1, {}}, Qt::black, 2), light);
    EXPECT_EQ(*counted.renderer.render({0.7, 1, {}}, Qt::white, 2), dark);
    EXPECT_EQ(counted.tintCount, 2);
}

TEST(MenuBarRenderer, AThirdInkTakesThePlaceOfTheOldest) {
    CountedRenderer counted;
    const auto tintsFor = [&counted](const QColor& ink) {
        const int before = counted.tintCount;
        counted.renderer.render({0.7, 1, {}}, ink, 2);
        return counted.tintCount - before;
    };
    EXPECT_EQ(tintsFor(Qt::black), 1);
    EXPECT_EQ(tintsFor(Qt::white), 1);
    EXPECT_EQ(tintsFor(Qt::black), 0);
    EXPECT_EQ(tintsFor(Qt::red), 1);
    EXPECT_EQ(tintsFor(Qt::white), 0);
    EXPECT_EQ(tintsFor(Qt::red), 0);
    EXPECT_EQ(tintsFor(Qt::black), 1);
    EXPECT_EQ(tintsFor(Qt::red), 0);
    EXPECT_EQ(tintsFor(Qt::white), 1);
}

TEST(MenuBarRenderer, InksThatDifferInAlphaAloneAreTwo) {
    CountedRenderer counted;
    counted.renderer.render({0.7, 1, {}}, QColor(0, 0, 0, 255), 2);
    counted.renderer.render({0.7, 1, {}}, QColor(0, 0, 0, 200), 2);
    EXPECT_EQ(counted.tintCount, 2);
}

TEST(MenuBarRenderer, AnotherScaleTakesAnotherBitmapAndTheSameTint) {
    CountedRenderer counted;
    const QImage twice = counted.renderer.render({0.7, 1, {}}, Qt::black, 2)->copy();
    const QImage thrice = counted.renderer.render({0.7, 1, {}}, Qt::black, 3)->copy();
    EXPECT_EQ(*counted.renderer.render({0.7, 1, {}}, Qt::black, 2), twice);
    EXPECT_EQ(counted.bitmapCount, 3);
    EXPECT_EQ(counted.tintCount, 1);
    CountedRenderer fresh;
    EXPECT_EQ(*fresh.renderer.render({0.7, 1, {}}, Qt::black, 3), thrice);
}

TEST(MenuBarRenderer, WithoutABitmapTheFrameIsAbsentAndTheNextTriesAgain) {
    CountedRenderer counted;
    counted.bitmapsFail = true;
    EXPECT_EQ(counted.renderer.render({0.7, 1, {}}, Qt::black, 2), nullptr);
    EXPECT_EQ(counted.renderer.render({0.7, 1, {}}, Qt::black, 2), nullptr);
    counted.bitmapsFail = false;
    const QImage* frame = counted.renderer.render({0.7, 1, {}}, Qt::black, 2);
    ASSERT_TRUE(frame);
    CountedRenderer fresh;
    EXPECT_EQ(*frame, *fresh.renderer.render({0.7, 1, {}}, Qt::black, 2));
}

TEST(MenuBarRenderer, ABitmapThatFailsAtAnotherScaleLeavesNoOldOne) {
    CountedRenderer counted;
    ASSERT_TRUE(counted.renderer.render({0.7, 1, {}}, Qt::black, 2));
    counted.bitmapsFail = true;
    EXPECT_EQ(counted.renderer.render({0.7, 1, {}}, Qt::black, 3), nullptr);
    counted.bitmapsFail = false;
    const QImage* frame = counted.renderer.render({0.7, 1, {}}, Qt::black, 3);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->size(), QSize(60, 60));
}

TEST(MenuBarRenderer, WithoutATintTheFrameIsAbsentAndTheNextTriesAgain) {
    CountedRenderer counted;
    counted.tintsFail = true;
    EXPECT_EQ(counted.renderer.render({0.7, 1, {}}, Qt::black, 2), nullptr);
    EXPECT_EQ(counted.renderer.render({0.7, 1, {}}, Qt::black, 2), nullptr);
    counted.tintsFail = false;
    EXPECT_TRUE(counted.renderer.render({0.7, 1, {}}, Qt::black, 2));
    EXPECT_EQ(counted.bitmapCount, 1);
}

TEST(MenuBarRenderer, ATintThatFailsLeavesTheOthers) {
    CountedRenderer counted;
    counted.renderer.render({0.7, 1, {}}, Qt::black, 2);
    counted.renderer.render({0.7, 1, {}}, Qt::white, 2);
    counted.tintsFail = true;
    EXPECT_EQ(counted.renderer.render({0.7, 1, {}}, Qt::red, 2), nullptr);
    EXPECT_TRUE(counted.renderer.render({0.7, 1, {}}, Qt::black, 2));
    EXPECT_TRUE(counted.renderer.render({0.7, 1, {}}, Qt::white, 2));
    EXPECT_EQ(counted.tintCount, 2);
}

}  // namespace
}  // namespace brimwatch
