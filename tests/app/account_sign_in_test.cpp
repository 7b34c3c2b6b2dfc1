#include "app/account_sign_in.h"

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "accounts_fixture.h"
#include "platform/linux/cloud_test.h"
#include "publish/memory_key_store.h"
#include "publish/publish_examples.h"
#include "publish/publishers/scripted_record_database.h"
#include "publishing_model.h"

namespace brimwatch {
namespace {

using End = CloudSignInResult::End;

TEST(SignInFailure, IsTellingWhatTheUserCanDo) {
    const CloudError error{.description = "서버가 로그인 화면을 알려 주지 않았어요."};
    const std::pair<CloudSignInResult, std::string> rows[] = {
        {{.end = End::signedIn}, ""},
        {{.end = End::cancelled}, ""},
        {{.end = End::notStored, .status = key_status::interactionNotAllowed},
         "로그인했지만 저장하지 못했어요 (오류 -25308). 앱을 다시 켜면 다시 로그인해 주세요."},
        {{.end = End::notAnswered}, "로그인이 끝나지 않았어요. 다시 눌러 주세요."},
        {{.end = End::addressUnusable},
         "로그인을 마칠 주소를 열지 못했어요. 잠시 뒤 다시 눌러 주세요."},
        {{.end = End::serverRefused, .error = error},
         "로그인하지 못했어요: 서버가 로그인 화면을 알려 주지 않았어요."},
        {{.end = End::browserMissing}, "로그인 페이지를 열 브라우저를 찾지 못했어요."},
    };
    for (const auto& [result, text] : rows)
        EXPECT_EQ(signInFailureText(result), text);
}

using Database = test::ScriptedRecordDatabase;

// A model both of whose channels have just tried to send.
class SendingModel final : public test::AccountsFixture {
  public:
    explicit SendingModel(const std::function<void(Database&)>& prepare) {
        defaults_.put("macID", "\"" + test::thisMac.text + "\"");
        keys_.values["net.quillmoor.brimwatch.sync/phone-key-v1"] =
            test::keyFilledWith('p').bytes();
        makeRegisteredFolder(".claude-a");
        writeLimits("claude-a", 10, 20);
        prepare(database);
        start(test::withPublishers(surroundings(), database, keys_, defaults_, time_));
        rest();
    }
    SendingModel(const SendingModel&) = delete;
    SendingModel& operator=(const SendingModel&) = delete;
    ~SendingModel() override { model_.reset(); }
    void TestBody() override {}

    // Lets what is due now happen, and nothing that waits for minutes.
    void rest() { settle(); }
    template <class State>
    bool areBoth() {
        return std::holds_alternative<State>(model().cloud().state()) &&
               std::holds_alternative<State>(model().phone().state());
    }

    using AccountsFixture::model;
    Database database;

  private:
    test::MemoryKeyStore keys_;
};

class AccountSignInTest : public test::CloudTest {
  protected:
    void SetUp() override {
        CloudTest::SetUp();
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost)));
        port_ = server.serverPort();
        server.close();
        sending_.emplace(
            [](Database& database) { database.account = CloudAccountStatus::noAccount; });
        ASSERT_TRUE(sending_->areBoth<publication::NoAccount>());
    }
    void TearDown() override {
        button_.reset();
        signIn_.reset();
        sending_.reset();
        settle();
        CloudTest::TearDown();
    }

    HelperModel& model() { return sending_->model(); }
    AccountSignIn& button(const std::string& returnAddress) {
        signIn_.emplace(CloudSignIn::Surroundings{.container = container(),
                                                  .returnAddress = returnAddress,
                                                  .openUrl =
                                                      [this](const QUrl& /*page*/) {
                                                          ++pageCount_;
                                                          return true;
                                                      }},
                        *token_);
        return button_.emplace(*signIn_, model());
    }
    // The press, and the way to the browser and back.
    void signInWithBrowser() {
        sending_->database.account = CloudAccountStatus::available;
        button("http://127.0.0.1:" + std::to_string(port_) + "/signed-in").start();
        ASSERT_TRUE(eventually([this] { return pageCount_ == 1; }));
        const QByteArray token = QByteArray::fromStdString(server_->signIn("me"));
        QTcpSocket browser;
        browser.connectToHost(QHostAddress(QHostAddress::LocalHost), port_);
        browser.write("GET /signed-in?ckWebAuthToken=" + token.toPercentEncoding() +
                      " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port_) + "\r\n\r\n");
        EXPECT_TRUE(
            eventually([&] { return browser.state() == QAbstractSocket::UnconnectedState; }));
        EXPECT_TRUE(eventually([this] { return !signIn_->isUnderWay(); }));
    }
    // So that the end of a sign-in can be seen.
    void failToStore() {
        keys_.answer = [](const std::string& call) -> std::optional<KeyStatus> {
            if (call == "update!") return key_status::userCanceled;
            return std::nullopt;
        };
    }
    bool isFailureTold() {
        return eventually([this] { return model().failure().has_value(); });
    }
    bool areBothSent() {
        return eventually([this] {
            sending_->rest();
            return sending_->areBoth<publication::Sent>();
        });
    }

    quint16 port_ = 0;
    int pageCount_ = 0;
    std::optional<SendingModel> sending_;
    std::optional<CloudSignIn> signIn_;
    std::optional<AccountSignIn> button_;
};

TEST_F(AccountSignInTest, SendsAtOnceWhatWaitedForTheAccount) {
    model().reportFailure("former");
    signInWithBrowser();
    EXPECT_TRUE(areBothSent());
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(AccountSignInTest, SendsAlsoWithATokenThatCouldNotBeStored) {
    failToStore();
    signInWithBrowser();
    EXPECT_TRUE(areBothSent());
    EXPECT_EQ(model().failure(),
              "로그인했지만 저장하지 못했어요 (오류 -128). 앱을 다시 켜면 다시 로그인해 주세요.");
}

TEST_F(AccountSignInTest, AFailureIsToldAndSendsNothing) {
    sending_->database.forgetCalls();
    button("").start();
    EXPECT_TRUE(isFailureTold());
    sending_->rest();
    EXPECT_TRUE(sending_->database.calls().empty());
    EXPECT_TRUE(sending_->areBoth<publication::NoAccount>());
}

TEST_F(AccountSignInTest, LeavesAChannelAloneThatIsSwitchedOff) {
    static_cast<void>(model().setCloudEnabled(false));
    sending_->rest();
    ASSERT_FALSE(model().cloud().isEnabled());
    failToStore();
    signInWithBrowser();
    EXPECT_TRUE(isFailureTold());
    sending_->rest();
    EXPECT_FALSE(model().cloud().isEnabled());
    EXPECT_TRUE(std::holds_alternative<publication::Sent>(model().phone().state()));
}

TEST_F(AccountSignInTest, LeavesWhatFailedForAnotherReasonToItsWait) {
    const std::deque<CloudError> networkErrors(10, test::cloudError(4));
    sending_.emplace([&](Database& database) {
        database.errors[Database::Kind::accountStatus] = networkErrors;
    });
    ASSERT_TRUE(sending_->areBoth<publication::Failed>());
    sending_->database.errors.clear();
    sending_->database.forgetCalls();
    failToStore();
    signInWithBrowser();
    EXPECT_TRUE(isFailureTold());
    sending_->rest();
    EXPECT_TRUE(sending_->areBoth<publication::Failed>());
    EXPECT_TRUE(sending_->database.calls().empty());
}

}  // namespace
}  // namespace brimwatch
