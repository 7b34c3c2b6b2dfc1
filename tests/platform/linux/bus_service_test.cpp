#include "platform/linux/bus_service.h"

#include <gtest/gtest.h>

#include "platform/linux/bus_properties.h"
#include "platform/linux/bus_test.h"

namespace brimwatch {
namespace {

using test::FakeService;

constexpr const char* name = "net.example.Fake";

class BusServiceTest : public test::BusTest {
  protected:
    void TearDown() override {
        service_.reset();
        fakes_.clear();
        test::BusTest::TearDown();
    }

    void watch() { watch(name); }
    void watch(const QString& watchedName) {
        service_ = std::make_unique<BusService>(*bus_, watchedName);
        QObject::connect(service_.get(), &BusService::ownerChanged,
                         [this] { owners_ << service_->owner(); });
    }
    FakeService& makeFake() {
        fakes_.push_back(std::make_unique<FakeService>(daemon_->address()));
        return *fakes_.back();
    }

    std::vector<std::unique_ptr<FakeService>> fakes_;
    std::unique_ptr<BusService> service_;
    QStringList owners_;
};

TEST_F(BusServiceTest, OneThatIsThereIsFound) {
    FakeService& fake = makeFake();
    fake.own(name);
    watch();
    EXPECT_FALSE(service_->isThere());
    EXPECT_TRUE(eventually([this] { return service_->isThere(); }));
    EXPECT_EQ(service_->owner(), fake.uniqueName());
    EXPECT_TRUE(hasArrived(fake));
    EXPECT_EQ(owners_, QStringList(fake.uniqueName()));
}

TEST_F(BusServiceTest, ThatNobodyIsThereIsToldOnce) {
    watch();
    EXPECT_TRUE(eventually([this] { return !owners_.isEmpty(); }));
    EXPECT_TRUE(hasArrived(makeFake()));
    EXPECT_EQ(owners_, QStringList(QString()));
}

TEST_F(BusServiceTest, OneThatComesAndGoesIsFollowed) {
    watch();
    FakeService& first = makeFake();
    FakeService& second = makeFake();
    const QString firstOwner = first.uniqueName();
    first.own(name);
    EXPECT_TRUE(eventually([&] { return service_->owner() == firstOwner; }));
    first.vanish();
    EXPECT_TRUE(eventually([&] { return !service_->isThere(); }));
    second.own(name);
    EXPECT_TRUE(eventually([&] { return service_->owner() == second.uniqueName(); }));
    second.release(name);
    EXPECT_TRUE(eventually([&] { return !service_->isThere(); }));
    EXPECT_EQ(owners_.mid(owners_.indexOf(firstOwner)),
              QStringList({firstOwner, "", second.uniqueName(), ""}));
}

TEST_F(BusServiceTest, OfOtherNamesNothingIsHeard) {
    watch();
    FakeService& fake = makeFake();
    ASSERT_TRUE(eventually([this] { return owners_.size() == 1; }));
    fake.own("net.example.Fake2");
    fake.own("net.example.Fak");
    EXPECT_TRUE(hasArrived(fake));
    EXPECT_EQ(owners_, QStringList(QString()));
}

TEST_F(BusServiceTest, AnOwnerThatOthersMakeUpIsNone) {
    watch();
    ASSERT_TRUE(eventually([this] { return owners_.size() == 1; }));
    FakeService& liar = makeFake();
    liar.say("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
             {QString(name), QString(), liar.uniqueName()});
    EXPECT_TRUE(hasArrived(liar));
    EXPECT_EQ(owners_, QStringList(QString()));
}

TEST_F(BusServiceTest, AConnectionOfAUniqueNameIsFollowedToItsEnd) {
    FakeService& fake = makeFake();
    watch(fake.uniqueName());
    EXPECT_TRUE(eventually([this] { return service_->isThere(); }));
    fake.vanish();
    EXPECT_TRUE(eventually([this] { return !service_->isThere(); }));
}

TEST_F(BusServiceTest, OfAUniqueNameThatHasGoneTheEndIsTold) {
    FakeService& fake = makeFake();
    const QString former = fake.uniqueName();
    fake.vanish();
    FakeService& later = makeFake();
    ASSERT_TRUE(eventually([&] { return !later.sees(former); }));
    watch(former);
    EXPECT_TRUE(eventually([this] { return owners_ == QStringList(QString()); }));
}

TEST_F(BusServiceTest, ItGoesWithTheBusAndComesBackWithIt) {
    FakeService& fake = makeFake();
    fake.own(name);
    watch();
    ASSERT_TRUE(eventually([this] { return service_->isThere(); }));
    daemon_->kill();
    EXPECT_TRUE(eventually([this] { return !service_->isThere(); }));
    fakes_.clear();
    daemon_->start();
    FakeService& again = makeFake();
    again.own(name);
    EXPECT_TRUE(eventually([&] { return service_->owner() == again.uniqueName(); }));
}

TEST_F(BusServiceTest, AFormerOwnerIsNoLongerHeard) {
    FakeService& first = makeFake();
    FakeService& second = makeFake();
    first.own(name);
    watch();
    ASSERT_TRUE(eventually([this] { return service_->isThere(); }));
    QStringList heard;
    const auto note = [&](const QDBusMessage& message) { heard << message.service(); };
    service_->listen({.interface = name, .name = "Word"}, note);
    QDBusMessage question;
    first.handle([&](const QDBusMessage& call) {
        question = call;
        return QDBusMessage();
    });
    service_->call("/", name, "Question", {}, note);
    ASSERT_TRUE(eventually([&] { return question.type() == QDBusMessage::MethodCallMessage; }));

    first.release(name);
    second.own(name);
    ASSERT_TRUE(eventually([&] { return service_->owner() == second.uniqueName(); }));
    first.say("/", name, "Word", {});
    first.connection().send(question.createReply());
    EXPECT_TRUE(hasArrived(first));
    EXPECT_EQ(heard, QStringList());

    service_->listen({.interface = name, .name = "Word"}, note);
    first.say("/", name, "Word", {});
    second.say("/", name, "Word", {});
    EXPECT_TRUE(hasArrived(first));
    EXPECT_TRUE(hasArrived(second));
    EXPECT_EQ(heard, QStringList(second.uniqueName()));
}

TEST_F(BusServiceTest, WhereNobodyIsThereNothingIsAskedOrHeard) {
    watch();
    ASSERT_TRUE(eventually([this] { return !owners_.isEmpty(); }));
    FakeService& fake = makeFake();
    service_->call("/", name, "Question", {}, [](const QDBusMessage&) { FAIL(); });
    service_->listen({.interface = name, .name = "Word"}, [](const QDBusMessage&) { FAIL(); });
    fake.say("/", name, "Word", {});
    EXPECT_TRUE(hasArrived(fake));
}

class BusPropertiesTest : public BusServiceTest {
  protected:
    void SetUp() override {
        BusServiceTest::SetUp();
        fake_ = &makeFake();
        fake_->own(name);
        fake_->handle([this](const QDBusMessage& call) { return call.createReply(answer_); });
        watch();
        ASSERT_TRUE(eventually([this] { return service_->isThere(); }));
    }

    void watchThem() {
        watchProperties(*service_, "/object", name,
                        [this](const QVariantMap& properties) { told_ << properties; });
    }
    void change(const QVariantList& arguments) {
        fake_->say("/object", "org.freedesktop.DBus.Properties", "PropertiesChanged", arguments);
    }

    FakeService* fake_ = nullptr;
    QVariant answer_ = QVariantMap{{"Color", "red"}};
    QList<QVariantMap> told_;
};

TEST_F(BusPropertiesTest, AllAreToldFirstAndThenWhatChanges) {
    watchThem();
    EXPECT_TRUE(eventually([this] { return told_.size() == 1; }));
    EXPECT_EQ(fake_->calls(), QStringList("GetAll net.example.Fake"));
    change({QString(name), QVariantMap{{"Color", "blue"}}, QStringList()});
    EXPECT_TRUE(eventually([this] { return told_.size() == 2; }));
    EXPECT_EQ(told_, QList<QVariantMap>({{{"Color", "red"}}, {{"Color", "blue"}}}));
}

TEST_F(BusPropertiesTest, WhatChangedWithoutAValueIsReadAgain) {
    watchThem();
    ASSERT_TRUE(eventually([this] { return told_.size() == 1; }));
    answer_ = QVariantMap{{"Color", "green"}};
    change({QString(name), QVariantMap(), QStringList("Color")});
    EXPECT_TRUE(eventually([this] { return told_.last() == answer_.toMap(); }));
}

TEST_F(BusPropertiesTest, AChangeCountsMoreThanAnAnswerThatComesBehindIt) {
    fake_->handle([this](const QDBusMessage& call) {
        if (fake_->calls().size() > 1)
            return call.createReply(QVariantMap{{"Color", "blue"}, {"Size", 2}, {"Age", 7}});
        change({QString(name), QVariantMap{{"Color", "blue"}}, QStringList("Size")});
        return call.createReply(QVariantMap{{"Color", "red"}, {"Size", 1}, {"Age", 7}});
    });
    watchThem();
    EXPECT_TRUE(eventually([this] { return told_.size() == 3; }));
    EXPECT_EQ(told_, QList<QVariantMap>({{{"Color", "blue"}},
                                         {{"Age", 7}},
                                         {{"Color", "blue"}, {"Size", 2}, {"Age", 7}}}));
}

TEST_F(BusPropertiesTest, OtherInterfacesAndTypesAreNotTold) {
    watchThem();
    ASSERT_TRUE(eventually([this] { return told_.size() == 1; }));
    change({"net.example.Other", QVariantMap{{"Color", "blue"}}, QStringList()});
    change({QString(name)});
    change({QString(name), "Color", "blue"});
    change({QString(name), QVariantMap{{"Color", "blue"}}});
    change({QString(name), QStringList("Color"), QStringList()});
    EXPECT_TRUE(hasArrived(*fake_));
    EXPECT_EQ(told_.size(), 1);
}

TEST_F(BusPropertiesTest, AnAnswerOfAnotherTypeIsNotTold) {
    for (const QVariant& answer :
         {QVariant("Color"), QVariant(7), QVariant(QStringList("Color")), QVariant(true)}) {
        answer_ = answer;
        watchThem();
    }
    EXPECT_TRUE(eventually([this] { return fake_->calls().size() == 4; }));
    EXPECT_TRUE(hasArrived(*fake_));
    EXPECT_TRUE(told_.isEmpty());
}

}  // namespace
}  // namespace brimwatch
