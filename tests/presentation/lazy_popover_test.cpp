#include "presentation/lazy_popover.h"

#include <gmock/gmock.h>

#include <QGuiApplication>

#include "scripted_desktop.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LazyPopoverTest : public ::testing::Test {
  protected:
    LazyPopoverTest() {
        QObject::connect(&lazy_, &Popover::willShow, [this] { events_.emplace_back("will show"); });
        QObject::connect(&lazy_, &Popover::didShow, [this] { events_.emplace_back("did show"); });
        QObject::connect(&lazy_, &Popover::willClose,
                         [this] { events_.emplace_back("will close"); });
        QObject::connect(&lazy_, &Popover::didClose, [this] { events_.emplace_back("did close"); });
    }

    int makeCount_ = 0;
    bool fails_ = false;
    test::ScriptedPopover* made_ = nullptr;
    std::vector<std::string> events_;
    LazyPopover lazy_{[this]() -> std::unique_ptr<Popover> {
        ++makeCount_;
        if (fails_) return nullptr;
        auto popover = std::make_unique<test::ScriptedPopover>();
        made_ = popover.get();
        return popover;
    }};
};

TEST_F(LazyPopoverTest, IsMadeWhenItIsFirstShownAndKept) {
    lazy_.setAppearance(Appearance::dark);
    lazy_.performClose();
    EXPECT_FALSE(lazy_.isShown());
    EXPECT_EQ(makeCount_, 0);
    lazy_.show(QPoint(3, 4), {});
    EXPECT_TRUE(lazy_.isShown());
    EXPECT_EQ(made_->click, QPoint(3, 4));
    lazy_.performClose();
    lazy_.show({}, {});
    EXPECT_EQ(makeCount_, 1);
}

TEST_F(LazyPopoverTest, TellsWhatHappensToIt) {
    lazy_.show({}, {});
    made_->loseFocus();
    EXPECT_THAT(events_, ElementsAre("will show", "did show", "will close", "did close"));
}

TEST_F(LazyPopoverTest, HasTheLookThatItWasGivenBeforeItWasMade) {
    lazy_.setAppearance(Appearance::dark);
    lazy_.setTextScale(1.5);
    lazy_.show({}, {});
    EXPECT_THAT(made_->log, ElementsAre("will show dark", "did show dark"));
    EXPECT_EQ(made_->textScale, 1.5);
}

TEST_F(LazyPopoverTest, HandsLaterLooksOn) {
    lazy_.show({}, {});
    lazy_.setAppearance(Appearance::dark);
    lazy_.setTextScale(2);
    EXPECT_EQ(made_->appearance, Appearance::dark);
    EXPECT_EQ(made_->textScale, 2);
}

TEST_F(LazyPopoverTest, ThatCantBeMadeStaysClosedAndIsTriedAgain) {
    fails_ = true;
    lazy_.show({}, {});
    EXPECT_FALSE(lazy_.isShown());
    EXPECT_THAT(events_, IsEmpty());
    fails_ = false;
    lazy_.show({}, {});
    EXPECT_TRUE(lazy_.isShown());
    EXPECT_EQ(makeCount_, 2);
}

}  // namespace
}  // namespace brimwatch
