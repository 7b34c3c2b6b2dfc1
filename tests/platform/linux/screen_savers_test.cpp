#include "platform/linux/screen_savers.h"

#include <gtest/gtest.h>

#include "platform/linux/bus_test.h"

namespace brimwatch {
namespace {

using test::FakeService;

struct Saver {
    std::string name;
    std::string path;
};

QString text(const std::string& bytes) {
    return QString::fromStdString(bytes);
}

class ScreenSaversFixture : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        service_.emplace(daemon_->address());
    }
    void TearDown() override {
        savers_.reset();
        service_.reset();
        test::BusTest::TearDown();
    }

    void watch() {
        savers_ = std::make_unique<ScreenSavers>(*bus_);
        QObject::connect(savers_.get(), &ScreenSavers::changed, [this] { ++changes_; });
        settle();
        // Each saver has been looked for.
        EXPECT_TRUE(hasArrived(*service_));
    }
    void answer(const QString& path, const QVariant& isActive) {
        service_->handle([path, isActive](const QDBusMessage& call) {
            return call.path() == path ? call.createReply(isActive)
                                       : call.createErrorReply(QDBusError::UnknownObject, "no");
        });
    }
    static void sayActive(FakeService& service, const Saver& saver, const QVariantList& arguments) {
        service.say(text(saver.path), text(saver.name), "ActiveChanged", arguments);
    }
    bool becomes(bool isActive) {
        return eventually([&] { return savers_->isAnyActive() == isActive; });
    }

    std::optional<FakeService> service_;
    std::unique_ptr<ScreenSavers> savers_;
    int changes_ = 0;
};

class EachScreenSaverTest : public ScreenSaversFixture,
                            public ::testing::WithParamInterface<Saver> {};

TEST_P(EachScreenSaverTest, IsHeard) {
    service_->own(text(GetParam().name));
    watch();
    sayActive(*service_, GetParam(), {true});
    EXPECT_TRUE(becomes(true));
    sayActive(*service_, GetParam(), {false});
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(changes_, 2);
}

TEST_P(EachScreenSaverTest, IsAskedAtFirst) {
    service_->own(text(GetParam().name));
    answer(text(GetParam().path), true);
    watch();
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(changes_, 1);
}

TEST_P(EachScreenSaverTest, IsAskedWhenItComesLate) {
    watch();
    answer(text(GetParam().path), true);
    service_->own(text(GetParam().name));
    EXPECT_TRUE(becomes(true));
}

TEST_P(EachScreenSaverTest, LeavesNothingBehindWhenItCrashes) {
    service_->own(text(GetParam().name));
    watch();
    sayActive(*service_, GetParam(), {true});
    ASSERT_TRUE(becomes(true));
    service_->vanish();
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(changes_, 2);
}

TEST_P(EachScreenSaverTest, IsNotStarted) {
    offer(GetParam().name);
    watch();
    settle();
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_FALSE(service_->sees(text(GetParam().name)));
    EXPECT_FALSE(daemon_->hasStarted(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    OfADesktop, EachScreenSaverTest,
    ::testing::Values(Saver{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
                      Saver{"org.freedesktop.ScreenSaver", "/ScreenSaver"},
                      Saver{"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"},
                      Saver{"org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"},
                      Saver{"org.mate.ScreenSaver", "/org/mate/ScreenSaver"},
                      Saver{"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver"}),
    [](const auto& information) {
        std::string name;
        for (const char letter : information.param.path)
            if (letter != '/') name += letter;
        return name;
    });

const Saver gnome{"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"};
const Saver common{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"};

class ScreenSaversTest : public ScreenSaversFixture {};

TEST_F(ScreenSaversTest, NoneIsActiveWhereThereIsNone) {
    watch();
    EXPECT_FALSE(savers_->isAnyActive());
    EXPECT_EQ(changes_, 0);
}

TEST_F(ScreenSaversTest, OneThatOwnsNoNameIsHeardUntilItsConnectionEnds) {
    watch();
    sayActive(*service_, gnome, {true});
    EXPECT_TRUE(becomes(true));
    service_->vanish();
    EXPECT_TRUE(becomes(false));
}

TEST_F(ScreenSaversTest, OneThatDiedRightAfterItsWordLeavesNothingBehind) {
    watch();
    FakeService other(daemon_->address());
    for (int round = 0; round < 20; ++round) {
        FakeService brief(daemon_->address());
        sayActive(brief, gnome, {true});
        EXPECT_TRUE(other.sees(brief.uniqueName()));
        brief.vanish();
    }
    EXPECT_TRUE(eventually([this] { return changes_ > 0; }));
    EXPECT_TRUE(becomes(false));
}

TEST_F(ScreenSaversTest, OneOfSeveralIsEnough) {
    FakeService other(daemon_->address());
    watch();
    sayActive(*service_, gnome, {true});
    EXPECT_TRUE(hasArrived(*service_));
    sayActive(other, common, {true});
    EXPECT_TRUE(hasArrived(other));
    sayActive(other, gnome, {false});
    EXPECT_TRUE(hasArrived(other));
    sayActive(*service_, gnome, {false});
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_TRUE(savers_->isAnyActive());
    EXPECT_EQ(changes_, 1);
    sayActive(other, common, {false});
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(changes_, 2);
}

TEST_F(ScreenSaversTest, TwoThatSpeakForOneSaverBothCount) {
    FakeService proxy(daemon_->address());
    watch();
    sayActive(*service_, gnome, {true});
    sayActive(proxy, gnome, {true});
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_TRUE(hasArrived(proxy));
    proxy.vanish();
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_TRUE(savers_->isAnyActive());
    sayActive(*service_, gnome, {false});
    EXPECT_TRUE(becomes(false));
}

TEST_F(ScreenSaversTest, WhatIsSaidTwiceIsToldOnce) {
    watch();
    sayActive(*service_, gnome, {true});
    sayActive(*service_, gnome, {true});
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_EQ(changes_, 1);
    sayActive(*service_, gnome, {false});
    sayActive(*service_, gnome, {false});
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_EQ(changes_, 2);
}

TEST_F(ScreenSaversTest, OneThatOnlyInhibitsIsNotActive) {
    service_->handle([](const QDBusMessage& call) {
        return call.createErrorReply(QDBusError::NotSupported, "only inhibits");
    });
    service_->own(text(common.name));
    watch();
    EXPECT_TRUE(eventually([this] { return service_->calls().size() == 2; }));
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_FALSE(savers_->isAnyActive());
}

TEST_F(ScreenSaversTest, AWordCountsMoreThanAnAnswerThatComesBehindIt) {
    service_->handle([this](const QDBusMessage& call) {
        sayActive(*service_, gnome, {true});
        return call.createReply(false);
    });
    service_->own(text(gnome.name));
    watch();
    EXPECT_TRUE(becomes(true));
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_TRUE(savers_->isAnyActive());
    EXPECT_EQ(changes_, 1);
}

TEST_F(ScreenSaversTest, TheWordOfAnotherDoesNotReplaceAnAnswer) {
    FakeService other(daemon_->address());
    service_->handle([&](const QDBusMessage& call) {
        sayActive(other, gnome, {false});
        EXPECT_TRUE(other.sees(service_->uniqueName()));
        return call.createReply(true);
    });
    service_->own(text(gnome.name));
    watch();
    EXPECT_TRUE(becomes(true));
}

TEST_F(ScreenSaversTest, OtherTypesAreNoWord) {
    answer(text(gnome.path), 1);
    service_->own(text(gnome.name));
    watch();
    EXPECT_TRUE(eventually([this] { return !service_->calls().isEmpty(); }));
    for (const QVariantList& arguments :
         {QVariantList(), QVariantList{1}, QVariantList{"true"}, QVariantList{QVariantMap()}}) {
        sayActive(*service_, gnome, arguments);
    }
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_FALSE(savers_->isAnyActive());
    EXPECT_EQ(changes_, 0);
}

TEST_F(ScreenSaversTest, OneThatHangsIsStillHeard) {
    connectToBus(test::impatientTiming);
    service_->handle([](const QDBusMessage&) { return QDBusMessage(); });
    service_->own(text(common.name));
    watch();
    // The second place is asked once the first had its time.
    EXPECT_TRUE(eventually([this] { return service_->calls().size() == 2; }));
    EXPECT_FALSE(savers_->isAnyActive());
    sayActive(*service_, common, {true});
    EXPECT_TRUE(becomes(true));
}

TEST_F(ScreenSaversTest, ABusThatDiesLeavesNothingBehind) {
    watch();
    sayActive(*service_, gnome, {true});
    ASSERT_TRUE(becomes(true));
    daemon_->kill();
    EXPECT_TRUE(becomes(false));
    service_.reset();
    daemon_->start();
    ASSERT_TRUE(eventually([this] { return bus_->isConnected(); }));
    service_.emplace(daemon_->address());
    EXPECT_TRUE(hasArrived(*service_));
    sayActive(*service_, gnome, {true});
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(changes_, 3);
}

TEST_F(ScreenSaversTest, AFloodEndsInItsLastWord) {
    watch();
    for (int round = 0; round < 1000; ++round) {
        sayActive(*service_, gnome, {true});
        sayActive(*service_, gnome, {false});
    }
    sayActive(*service_, gnome, {true});
    EXPECT_TRUE(hasArrived(*service_));
    EXPECT_TRUE(savers_->isAnyActive());
    EXPECT_EQ(changes_, 2001);
}

}  // namespace
}  // namespace brimwatch
