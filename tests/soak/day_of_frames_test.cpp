// A day in the life of the icon: ten frames a second, with a week that runs out and is renewed,
// panels that turn dark and light again, and now and then another scale.

#include <gtest/gtest.h>
#include <malloc.h>

#include <QImage>
#include <algorithm>
#include <cstdio>
#include <random>

#include "presentation/menu_bar_motion.h"
#include "presentation/menu_bar_renderer.h"

namespace brimwatch {
namespace {

constexpr int framesOfADay = 864'000;
constexpr int framesOfAnHour = framesOfADay / 24;

// A leak of one byte in thirteen frames would be more than this.
constexpr std::size_t memoryTolerance = 65'536;

class DayOfFrames : public ::testing::Test {
  protected:
    void renderUpTo(int frame) {
        for (; frame_ < frame; ++frame_) {
            const double weekly = 1 - 1.1 * (frame_ % framesOfAnHour) / framesOfAnHour;
            const QColor ink = frame_ / 1000 % 2 == 0 ? Qt::black : Qt::white;
            const double scale = frame_ / framesOfAnHour % 3 + 1;
            motion_.step(0.1, weekly);
            const MenuBarIcon icon{std::max(weekly, 0.0), motion_.angle,
                                   drawShake(weekly, random_)};
            ASSERT_TRUE(renderer_.render(icon, ink, scale)) << "frame " << frame_;
        }
    }

    static std::size_t memoryInUse() {
        const struct mallinfo2 memory = ::mallinfo2();
        return memory.uordblks + memory.hblkhd;
    }

  private:
    int frame_ = 0;
    MenuBarMotion motion_;
    MenuBarRenderer renderer_{sharedRocket().value()};
    std::mt19937 random_{1};
};

TEST_F(DayOfFrames, LeavesNothingBehind) {
    // After three hours each scale was there once; so it is at the end.
    renderUpTo(3 * framesOfAnHour);
    const std::size_t memoryBefore = memoryInUse();
    renderUpTo(framesOfADay);
    const std::size_t memoryAfter = memoryInUse();
    std::printf("%d frames; memory in use: %zu bytes after three hours, %zu at the end\n",
                framesOfADay, memoryBefore, memoryAfter);
    EXPECT_LT(memoryAfter, memoryBefore + memoryTolerance);
}

}  // namespace
}  // namespace brimwatch
