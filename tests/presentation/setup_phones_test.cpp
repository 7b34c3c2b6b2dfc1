#include <gmock/gmock.h>

#include <QSignalSpy>

#include "setup_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using Calls = test::ScriptedRecordDatabase::Kind;

class SetupPhones : public test::SetupFixture {
  protected:
    SetupPhones() {
        keys_.values["net.quillmoor.brimwatch.sync/limits-key-v1"] =
            test::keyFilledWith('c').bytes();
        keys_.values["net.quillmoor.brimwatch.sync/phone-key-v1"] =
            test::keyFilledWith('p').bytes();
    }
    PhonesSection& send() {
        makeRegisteredFolder(".claude-a");
        writeLimits("claude-a", 10, 20);
        startWithPhones();
        settleAll();
        return *makeShownSettings().phones();
    }
};

TEST_F(SetupPhones, TellWhatWasSent) {
    const PhonesSection& phones = send();
    EXPECT_EQ(phones.iPhoneStatus().toStdString(),
              CloudPublisher::displayText(model().cloud().state(), model().locale()));
    EXPECT_TRUE(phones.iPhoneStatus().startsWith("iPhone으로 보냄: "));
    EXPECT_TRUE(phones.androidStatus().startsWith("안드로이드로 보냄: "));
    EXPECT_TRUE(phones.sendsToIPhone());
    EXPECT_FALSE(phones.iPhoneNeedsAttention());
    EXPECT_FALSE(phones.androidNeedsAttention());
    EXPECT_FALSE(phones.iPhoneOffersSignIn());
    EXPECT_FALSE(phones.androidOffersSignIn());
}

TEST_F(SetupPhones, ABuildWithoutTheRightSaysSo) {
    start();
    const PhonesSection& phones = *makeShownSettings().phones();
    EXPECT_EQ(phones.iPhoneStatus(), "개발용 빌드라 iPhone으로 보내지 않아요.");
    EXPECT_EQ(phones.androidStatus(), "개발용 빌드라 안드로이드로 보내지 않아요.");
    EXPECT_FALSE(phones.iPhoneNeedsAttention());
}

TEST_F(SetupPhones, AMissingAccountIsToldAndOffered) {
    database_.account = CloudAccountStatus::noAccount;
    PhonesSection& phones = send();
    EXPECT_EQ(phones.iPhoneStatus(), "시스템 설정에서 Apple 계정에 로그인해 주세요.");
    EXPECT_TRUE(phones.iPhoneNeedsAttention());
    EXPECT_TRUE(phones.androidNeedsAttention());
    EXPECT_TRUE(phones.iPhoneOffersSignIn());
    EXPECT_TRUE(phones.androidOffersSignIn());
    phones.signIn();
    EXPECT_THAT(calls_, ElementsAre("signIn"));
}

TEST_F(SetupPhones, NoSignInIsOfferedWhereThereIsNone) {
    canSignIn_ = false;
    database_.account = CloudAccountStatus::noAccount;
    const PhonesSection& phones = send();
    EXPECT_FALSE(phones.iPhoneOffersSignIn());
    EXPECT_FALSE(phones.androidOffersSignIn());
    EXPECT_TRUE(phones.iPhoneNeedsAttention());
}

TEST_F(SetupPhones, AFailureIsToldWithoutASignIn) {
    database_.errors[Calls::save] = {test::cloudError(3), test::cloudError(3)};
    const PhonesSection& phones = send();
    EXPECT_EQ(phones.iPhoneStatus(), "인터넷에 연결되지 않았어요. 연결되면 다시 보내요.");
    EXPECT_TRUE(phones.iPhoneNeedsAttention());
    EXPECT_TRUE(phones.androidNeedsAttention());
    EXPECT_FALSE(phones.iPhoneOffersSignIn());
    EXPECT_FALSE(phones.androidOffersSignIn());
}

TEST_F(SetupPhones, SwitchTheIPhonesOffAndOn) {
    PhonesSection& phones = send();
    QSignalSpy enabled(&phones, &PhonesSection::sendsToIPhoneChanged);
    QSignalSpy status(&phones, &PhonesSection::iPhoneStatusChanged);
    phones.setSendsToIPhone(false);
    EXPECT_FALSE(phones.sendsToIPhone());
    settleAll();
    EXPECT_EQ(phones.iPhoneStatus(), "iPhone으로 보내지 않아요.");
    EXPECT_FALSE(phones.iPhoneNeedsAttention());
    phones.setSendsToIPhone(true);
    settleAll();
    EXPECT_TRUE(phones.sendsToIPhone());
    EXPECT_TRUE(phones.iPhoneStatus().startsWith("iPhone으로 보냄: "));
    EXPECT_EQ(enabled.count(), 2);
    EXPECT_GE(status.count(), 2);
}

TEST_F(SetupPhones, AFailureToTakeBackWhatWasSentIsTold) {
    PhonesSection& phones = send();
    database_.errors[Calls::fetch] = {test::cloudError(3)};
    phones.setSendsToIPhone(false);
    settleAll();
    EXPECT_TRUE(settings_->failure().startsWith("iPhone으로 보낸 값을 지우지 못했어요: "));
    EXPECT_FALSE(phones.sendsToIPhone());
}

TEST_F(SetupPhones, TellThatNoAndroidPhoneIsLinked) {
    keys_.values.clear();
    const PhonesSection& phones = send();
    EXPECT_EQ(phones.androidStatus(), "연결하지 않았어요.");
    QSignalSpy spy(&phones, &PhonesSection::androidStatusChanged);
    model().phone().showLink();
    EXPECT_GE(spy.count(), 1);
    EXPECT_NE(phones.androidStatus(), "연결하지 않았어요.");
}

TEST_F(SetupPhones, ShowTheLinkToAPhone) {
    send().showPhoneLink();
    EXPECT_THAT(calls_, ElementsAre("showPhoneLink"));
}

}  // namespace
}  // namespace brimwatch
