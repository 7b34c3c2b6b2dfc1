#include "platform/linux/portal_appearance.h"

#include <gtest/gtest.h>

#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>
#include <cmath>
#include <limits>
#include <map>

#include "harness/temporary_folder.h"
#include "platform/linux/bus_test.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

using test::FakeService;

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* scheme = "org.freedesktop.appearance color-scheme";
constexpr const char* reducedMotion = "org.freedesktop.appearance reduced-motion";
constexpr const char* contrast = "org.freedesktop.appearance contrast";
constexpr const char* animations = "org.gnome.desktop.interface enable-animations";
constexpr const char* textScale = "org.gnome.desktop.interface text-scaling-factor";

QVariant variant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

class PortalAppearanceTest : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        makePortal();
    }
    void TearDown() override {
        appearance_.reset();
        portal_.reset();
        test::BusTest::TearDown();
    }

    void makePortal() {
        portal_.emplace(daemon_->address());
        portal_->handle([this](const QDBusMessage& call) {
            const auto found = settings_.find(call.arguments().value(0).toString() + ' ' +
                                              call.arguments().value(1).toString());
            if (call.member() != "Read" || found == settings_.end())
                return call.createErrorReply("org.freedesktop.portal.Error.NotFound", "no");
            return call.createReply(found->second);
        });
    }
    // As the first version of the interface wraps it.
    void provide(const QString& setting, const QVariant& value) {
        settings_[setting] = variant(variant(value));
    }
    void watch() {
        appearance_ = std::make_unique<PortalAppearance>(*bus_, files_, folder_.path());
        QObject::connect(appearance_.get(), &DesktopAppearance::darkChanged, [this] { ++dark_; });
        QObject::connect(appearance_.get(), &DesktopAppearance::motionChanged,
                         [this] { ++motion_; });
        QObject::connect(appearance_.get(), &DesktopAppearance::contrastChanged,
                         [this] { ++contrast_; });
        QObject::connect(appearance_.get(), &DesktopAppearance::textScaleChanged,
                         [this] { ++scale_; });
    }
    void watchRunning() {
        portal_->own(portalName);
        watch();
        EXPECT_TRUE(hasBeenRead());
    }
    bool hasBeenRead(int times = 1) {
        return eventually([&] { return portal_->calls().size() == 5 * times; }) &&
               hasArrived(*portal_);
    }
    void change(const QString& setting, const QVariant& value) {
        const QStringList names = setting.split(' ');
        portal_->say("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                     "SettingChanged", {names[0], names[1], value});
        EXPECT_TRUE(hasArrived(*portal_));
    }
    void stopKdeMotion() {
        test::writeFile(folder_.file("kdeglobals"), "[KDE]\nAnimationDurationFactor=0\n");
    }
    int changes() const { return dark_ + motion_ + contrast_ + scale_; }

    test::TemporaryFolder folder_;
    PosixFileSystem files_;
    std::map<QString, QVariant> settings_;
    std::optional<FakeService> portal_;
    std::unique_ptr<PortalAppearance> appearance_;
    int dark_ = 0;
    int motion_ = 0;
    int contrast_ = 0;
    int scale_ = 0;
};

TEST_F(PortalAppearanceTest, IsLightAndMovingAndOfUsualSizeAtFirst) {
    provide(scheme, 1U);
    provide(reducedMotion, 1U);
    provide(textScale, 2.0);
    portal_->own(portalName);
    watch();
    EXPECT_FALSE(appearance_->isDark());
    EXPECT_FALSE(appearance_->reducesMotion());
    EXPECT_EQ(appearance_->textScale(), 1);
    EXPECT_EQ(changes(), 0);
}

TEST_F(PortalAppearanceTest, IsThenReadFromThePortal) {
    provide(scheme, 1U);
    provide(reducedMotion, 1U);
    provide(textScale, 1.25);
    watchRunning();
    EXPECT_TRUE(appearance_->isDark());
    EXPECT_TRUE(appearance_->reducesMotion());
    EXPECT_EQ(appearance_->textScale(), 1.25);
    EXPECT_EQ(dark_, 1);
    EXPECT_EQ(motion_, 1);
    EXPECT_EQ(scale_, 1);
}

TEST_F(PortalAppearanceTest, ValuesMayBeWrappedOnceOrMore) {
    settings_[scheme] = variant(1U);
    settings_[textScale] = variant(variant(variant(1.5)));
    watchRunning();
    EXPECT_TRUE(appearance_->isDark());
    EXPECT_EQ(appearance_->textScale(), 1.5);
}

TEST_F(PortalAppearanceTest, FollowsWhatChanges) {
    watchRunning();
    change(scheme, variant(1U));
    EXPECT_TRUE(appearance_->isDark());
    change(scheme, variant(2U));
    EXPECT_FALSE(appearance_->isDark());
    change(reducedMotion, variant(1U));
    EXPECT_TRUE(appearance_->reducesMotion());
    change(reducedMotion, variant(0U));
    EXPECT_FALSE(appearance_->reducesMotion());
    change(textScale, variant(variant(1.5)));
    EXPECT_EQ(appearance_->textScale(), 1.5);
    EXPECT_EQ(dark_, 2);
    EXPECT_EQ(motion_, 2);
    EXPECT_EQ(scale_, 1);
}

TEST_F(PortalAppearanceTest, TellsWhenMoreContrastIsWanted) {
    provide(contrast, 1U);
    portal_->own(portalName);
    watch();
    EXPECT_FALSE(appearance_->increasesContrast());
    ASSERT_TRUE(hasBeenRead());
    EXPECT_TRUE(appearance_->increasesContrast());
    EXPECT_EQ(changes(), 1);
    change(contrast, variant(0U));
    EXPECT_FALSE(appearance_->increasesContrast());
    EXPECT_EQ(contrast_, 2);
}

TEST_F(PortalAppearanceTest, UnknownContrastIsTheUsualOne) {
    watchRunning();
    for (const QVariant& value : {QVariant(2U), QVariant(QStringLiteral("1")), QVariant(true)}) {
        change(contrast, variant(value));
        EXPECT_FALSE(appearance_->increasesContrast());
    }
    EXPECT_EQ(changes(), 0);
}

TEST_F(PortalAppearanceTest, AChangeCountsMoreThanAnAnswerThatComesBehindIt) {
    portal_->handle([this](const QDBusMessage& call) {
        portal_->say("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                     "SettingChanged", {"org.freedesktop.appearance", "color-scheme", variant(1U)});
        return call.createReply(variant(2U));
    });
    watchRunning();
    EXPECT_TRUE(appearance_->isDark());
    EXPECT_EQ(dark_, 1);
}

TEST_F(PortalAppearanceTest, WhatStaysTheSameIsNotTold) {
    provide(scheme, 1U);
    watchRunning();
    ASSERT_EQ(changes(), 1);
    change(scheme, variant(1U));
    change(reducedMotion, variant(0U));
    change(animations, variant(true));
    change(textScale, variant(1.0));
    change(contrast, variant(0U));
    change("org.freedesktop.appearance accent-color", variant(1U));
    change("org.gnome.desktop.interface color-scheme", variant(0U));
    change("org.gnome.desktop.interface reduced-motion", variant(1U));
    EXPECT_EQ(changes(), 1);
}

TEST_F(PortalAppearanceTest, UnknownNumbersCountAsNone) {
    watchRunning();
    for (const unsigned number : {0U, 2U, 3U, 4294967295U}) {
        change(reducedMotion, variant(1U));
        change(reducedMotion, variant(number));
        EXPECT_FALSE(appearance_->reducesMotion()) << number;
    }
    for (const unsigned number : {0U, 3U, 4294967295U}) {
        change(scheme, variant(1U));
        change(scheme, variant(number));
        EXPECT_FALSE(appearance_->isDark()) << number;
    }
}

TEST_F(PortalAppearanceTest, ValuesOfOtherTypesCountAsNone) {
    provide(scheme, 1);
    provide(reducedMotion, true);
    provide(animations, 0U);
    provide(textScale, 2U);
    watchRunning();
    change(scheme, variant("1"));
    change(reducedMotion, variant(1.0));
    change(animations, variant("false"));
    change(textScale, variant("2"));
    EXPECT_EQ(changes(), 0);
    change(scheme, variant(1U));
    change(scheme, variant(QStringList("dark")));
    EXPECT_FALSE(appearance_->isDark());
}

TEST_F(PortalAppearanceTest, AnswersAndSignalsOfOtherTypesAreNone) {
    settings_[scheme] = 1U;
    settings_[textScale] = QVariantMap{{"value", 2.0}};
    watchRunning();
    const auto say = [this](const QVariantList& arguments) {
        portal_->say("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                     "SettingChanged", arguments);
    };
    say({});
    say({"org.freedesktop.appearance"});
    say({"org.freedesktop.appearance", "color-scheme"});
    say({"org.freedesktop.appearance", "color-scheme", 1U});
    say({1, 2, variant(1U)});
    EXPECT_TRUE(hasArrived(*portal_));
    EXPECT_EQ(changes(), 0);
}

TEST_F(PortalAppearanceTest, DisabledAnimationsReduceMotion) {
    provide(animations, false);
    watchRunning();
    EXPECT_TRUE(appearance_->reducesMotion());
    change(animations, variant(true));
    EXPECT_FALSE(appearance_->reducesMotion());
}

TEST_F(PortalAppearanceTest, DisabledAnimationsReduceMotionWhateverElseIsTold) {
    provide(reducedMotion, 0U);
    provide(animations, false);
    watchRunning();
    EXPECT_TRUE(appearance_->reducesMotion());
    change(animations, variant(true));
    EXPECT_FALSE(appearance_->reducesMotion());
    change(reducedMotion, variant(1U));
    EXPECT_TRUE(appearance_->reducesMotion());
}

TEST_F(PortalAppearanceTest, PlasmaFileCountsWhereThePortalTellsNothing) {
    stopKdeMotion();
    watch();
    EXPECT_TRUE(appearance_->reducesMotion());
    portal_->own(portalName);
    EXPECT_TRUE(hasBeenRead());
    EXPECT_TRUE(appearance_->reducesMotion());
    EXPECT_EQ(motion_, 0);
}

TEST_F(PortalAppearanceTest, PlasmaFileDoesNotCountAgainstThePortal) {
    stopKdeMotion();
    provide(reducedMotion, 0U);
    watchRunning();
    EXPECT_FALSE(appearance_->reducesMotion());
    EXPECT_EQ(motion_, 1);
    settings_.clear();
    provide(animations, true);
    portal_->release(portalName);
    portal_->own(portalName);
    EXPECT_TRUE(hasBeenRead(2));
    EXPECT_FALSE(appearance_->reducesMotion());
}

TEST_F(PortalAppearanceTest, TheTextScaleStaysWithinReason) {
    watchRunning();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const auto& [told, scale] : std::map<double, double>{{-infinity, 0.5},
                                                              {-2, 0.5},
                                                              {0, 0.5},
                                                              {0.5, 0.5},
                                                              {0.75, 0.75},
                                                              {3, 3},
                                                              {3.5, 3},
                                                              {1e300, 3},
                                                              {infinity, 3}}) {
        change(textScale, variant(told));
        EXPECT_EQ(appearance_->textScale(), scale) << told;
    }
}

TEST_F(PortalAppearanceTest, ATextScaleThatIsNoNumberIsTheUsualOne) {
    provide(textScale, std::nan(""));
    watchRunning();
    EXPECT_EQ(appearance_->textScale(), 1);
    EXPECT_EQ(scale_, 0);
    change(textScale, variant(2.0));
    change(textScale, variant(std::nan("")));
    change(textScale, variant(std::nan("")));
    EXPECT_EQ(appearance_->textScale(), 1);
    EXPECT_EQ(scale_, 2);
}

TEST_F(PortalAppearanceTest, APortalThatComesLateIsRead) {
    provide(scheme, 1U);
    watch();
    EXPECT_TRUE(hasArrived(*portal_));
    portal_->own(portalName);
    EXPECT_TRUE(eventually([this] { return appearance_->isDark(); }));
}

TEST_F(PortalAppearanceTest, ThePortalIsStarted) {
    offer(portalName);
    watch();
    EXPECT_TRUE(eventually([this] { return daemon_->hasStarted(portalName); }));
}

TEST_F(PortalAppearanceTest, WhatAPortalToldLastStaysWhileItIsGone) {
    provide(scheme, 1U);
    provide(textScale, 2.0);
    watchRunning();
    portal_->release(portalName);
    change(scheme, variant(2U));  // from nobody
    EXPECT_TRUE(appearance_->isDark());
    provide(scheme, 2U);
    settings_.erase(textScale);
    portal_->own(portalName);
    EXPECT_TRUE(hasBeenRead(2));
    EXPECT_FALSE(appearance_->isDark());
    EXPECT_EQ(appearance_->textScale(), 1);
    EXPECT_EQ(dark_, 2);
    EXPECT_EQ(scale_, 2);
}

TEST_F(PortalAppearanceTest, APortalThatIsStartedAgainUnchangedIsNotTold) {
    provide(scheme, 1U);
    watchRunning();
    portal_->release(portalName);
    portal_->own(portalName);
    EXPECT_TRUE(hasBeenRead(2));
    EXPECT_TRUE(appearance_->isDark());
    EXPECT_EQ(dark_, 1);
}

TEST_F(PortalAppearanceTest, ABusThatComesBackIsReadAgain) {
    provide(scheme, 1U);
    watchRunning();
    daemon_->kill();
    ASSERT_TRUE(eventually([this] { return !bus_->isConnected(); }));
    EXPECT_TRUE(appearance_->isDark());
    portal_.reset();
    daemon_->start();
    provide(scheme, 2U);
    makePortal();
    portal_->own(portalName);
    EXPECT_TRUE(eventually([this] { return !appearance_->isDark(); }));
}

TEST_F(PortalAppearanceTest, APortalThatHangsIsStillHeard) {
    connectToBus(test::impatientTiming);
    portal_->handle([](const QDBusMessage&) { return QDBusMessage(); });
    watchRunning();
    EXPECT_EQ(changes(), 0);
    change(scheme, variant(1U));
    EXPECT_TRUE(eventually([this] { return appearance_->isDark(); }));
}

TEST_F(PortalAppearanceTest, WithoutABusItStaysAsItWas) {
    bus_ = std::make_unique<BusConnection>(QString(), test::quickTiming);
    watch();
    bus_->open();
    settle();
    EXPECT_FALSE(appearance_->isDark());
    EXPECT_EQ(changes(), 0);
}

TEST_F(PortalAppearanceTest, AFloodEndsInItsLastWord) {
    watchRunning();
    const auto say = [this](unsigned number) {
        portal_->say("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                     "SettingChanged",
                     {"org.freedesktop.appearance", "color-scheme", variant(number)});
    };
    for (int round = 0; round < 1000; ++round) {
        say(1);
        say(2);
    }
    say(1);
    EXPECT_TRUE(hasArrived(*portal_));
    EXPECT_TRUE(appearance_->isDark());
    EXPECT_EQ(dark_, 2001);
}

class PaletteAppearanceTest : public ::testing::Test {
  protected:
    static void setWindowColor(const QColor& color) {
        QPalette palette = QGuiApplication::palette();
        palette.setColor(QPalette::Window, color);
        QGuiApplication::setPalette(palette);
        QCoreApplication::processEvents();
    }

    int count_ = 1;
    std::string name_ = "session_test";
    char* arguments_[2] = {name_.data(), nullptr};
    QGuiApplication application_{count_, arguments_};
    PosixFileSystem files_;
    BusConnection bus_{QString()};
};

TEST_F(PaletteAppearanceTest, IsDarkWhereTheWindowsAre) {
    setWindowColor(Qt::white);
    EXPECT_FALSE(PortalAppearance(bus_, files_, std::nullopt).isDark());
    setWindowColor(QColor(30, 30, 46));
    EXPECT_TRUE(PortalAppearance(bus_, files_, std::nullopt).isDark());
}

TEST_F(PaletteAppearanceTest, FollowsThePalette) {
    setWindowColor(Qt::white);
    PortalAppearance appearance(bus_, files_, std::nullopt);
    int changes = 0;
    QObject::connect(&appearance, &DesktopAppearance::darkChanged, [&] { ++changes; });
    setWindowColor(Qt::black);
    EXPECT_TRUE(appearance.isDark());
    setWindowColor(QColor(10, 10, 10));
    EXPECT_TRUE(appearance.isDark());
    EXPECT_EQ(changes, 1);
    setWindowColor(Qt::white);
    EXPECT_FALSE(appearance.isDark());
    EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace brimwatch
