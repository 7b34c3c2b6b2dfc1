#include "platform/linux/cloud_sign_in.h"

#include <QCoreApplication>
#include <QTimer>
#include <utility>

#include "platform/linux/cloud_questions.h"
#include "platform/linux/sign_in_page.h"

namespace brimwatch {
namespace {

using End = CloudSignInResult::End;

CloudSignInResult refused(CloudError error) {
    return {.end = End::serverRefused, .error = std::move(error)};
}

// The page of the provider's where the user can sign in, as the refusal of a question tells it.
tl::expected<QUrl, CloudError> pageToOpen(CloudAnswer answer) {
    CloudError unusable{.code = cloud_error_code::internalError,
                        .description = "서버가 로그인 화면을 알려 주지 않았어요."};
    if (answer) return tl::unexpected(std::move(unusable));
    CloudRefusal& refusal = answer.error();
    if (refusal.redirectUrl.empty()) return tl::unexpected(std::move(refusal.error));
    const QUrl page(QString::fromStdString(refusal.redirectUrl), QUrl::StrictMode);
    const bool isUsable = page.isValid() && page.scheme() == QLatin1String("https") &&
                          !page.host().isEmpty() && page.userInfo().isEmpty();
    if (!isUsable) return tl::unexpected(std::move(unusable));
    return page;
}

}  // namespace

class CloudSignIn::Attempt {
  public:
    explicit Attempt(const Surroundings& surroundings)
        : connection_(std::make_shared<CloudConnection>(surroundings.container, nullptr,
                                                        surroundings.timing)) {
        late_.setSingleShot(true);
        late_.setInterval(surroundings.giveUpAfter);
        QObject::connect(&late_, &QTimer::timeout, &late_, [this] { finish(End::notAnswered); });
    }

    bool isOver() const { return isOver_; }
    // Also one that has ended but was not looked at yet.
    void cancel();
    const std::shared_ptr<CloudConnection>& connection() const { return connection_; }

    // Whether the browser can come back.
    bool awaitReturn(const SignInAddress& address);
    EventLoopWait& wait() { return wait_; }
    End end() const { return end_; }
    const SecretBytes& token() const { return token_; }

  private:
    void finish(End end);

    bool isOver_ = false;
    End end_ = End::cancelled;
    SecretBytes token_;
    std::shared_ptr<CloudConnection> connection_;
    QTimer late_;
    EventLoopWait wait_{[this] { cancel(); }};
    std::optional<SignInPage> page_;
};

bool CloudSignIn::Attempt::awaitReturn(const SignInAddress& address) {
    page_.emplace(address, [this](SecretBytes token) {
        token_ = std::move(token);
        finish(End::signedIn);
    });
    late_.start();
    return page_->isListening();
}

void CloudSignIn::Attempt::cancel() {
    finish(End::cancelled);
    end_ = End::cancelled;
}

void CloudSignIn::Attempt::finish(End end) {
    if (isOver_) return;
    isOver_ = true;
    end_ = end;
    late_.stop();
    connection_->close();
    if (page_) page_->close();  // the next attempt needs its port
    wait_.end();
}

namespace {

using Attempt = std::shared_ptr<CloudSignIn::Attempt>;

class EndOfAttempt {
  public:
    explicit EndOfAttempt(Attempt attempt) : attempt_(std::move(attempt)) {}
    EndOfAttempt(const EndOfAttempt&) = delete;
    EndOfAttempt& operator=(const EndOfAttempt&) = delete;
    ~EndOfAttempt() { attempt_->cancel(); }

  private:
    Attempt attempt_;
};

CloudSignInResult stored(KeyStatus status) {
    return {.end = status == key_status::success ? End::signedIn : End::notStored,
            .status = status};
}

QCoro::Task<CloudSignInResult> signInWith(Attempt attempt, CloudSignIn::Surroundings surroundings,
                                          CloudUserToken* userToken) {
    const EndOfAttempt endOfAttempt(attempt);
    const std::optional<SignInAddress> address = SignInAddress::parse(surroundings.returnAddress);
    if (!address) co_return CloudSignInResult{.end = End::addressUnusable};

    const QDeadlineTimer deadline = attempt->connection()->deadline();
    CloudAnswer answer =
        co_await CloudConnection::ask(attempt->connection(), askCaller(), deadline);
    if (attempt->isOver()) co_return CloudSignInResult{.end = End::cancelled};
    tl::expected<QUrl, CloudError> page = pageToOpen(std::move(answer));
    if (!page) co_return refused(std::move(page.error()));

    if (!attempt->awaitReturn(*address)) co_return CloudSignInResult{.end = End::addressUnusable};
    if (!surroundings.openUrl(*page)) co_return CloudSignInResult{.end = End::browserMissing};
    const EventLoopWait::End isOver(attempt->wait());
    co_await isOver;
    if (attempt->end() != End::signedIn) co_return CloudSignInResult{.end = attempt->end()};
    co_return stored(userToken->set(attempt->token(), KeyPrompt::allowed));
}

}  // namespace

CloudSignIn::CloudSignIn(Surroundings surroundings, CloudUserToken& userToken)
    : surroundings_(std::move(surroundings)), userToken_(userToken) {}

CloudSignIn::~CloudSignIn() {
    endAttempt();
}

QCoro::Task<CloudSignInResult> CloudSignIn::signIn() {
    endAttempt();
    attempt_ = std::make_shared<Attempt>(surroundings_);
    return signInWith(attempt_, surroundings_, &userToken_);
}

KeyStatus CloudSignIn::signOut() {
    endAttempt();
    return userToken_.forget(KeyPrompt::allowed);
}

bool CloudSignIn::isUnderWay() const {
    return attempt_ != nullptr && !attempt_->isOver();
}

void CloudSignIn::endAttempt() {
    if (attempt_ != nullptr) std::exchange(attempt_, nullptr)->cancel();
}

}  // namespace brimwatch
