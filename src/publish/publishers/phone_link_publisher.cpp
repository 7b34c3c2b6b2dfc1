#include "publish/publishers/phone_link_publisher.h"

#include <QLoggingCategory>
#include <chrono>
#include <utility>

#include "limits/short_time_text.h"
#include "platform/spawn.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using publication::Failed;
using publication::NoAccount;
using publication::Sent;
using publication::Unavailable;
using publication::Waiting;

const QLoggingCategory& phoneLog() {
    static const QLoggingCategory category("net.quillmoor.brimwatch.mac.phone");
    return category;
}

std::string stateText(const Waiting& /*state*/, const std::string& /*locale*/) {
    return "보낼 한도를 기다리고 있어요.";
}

std::string stateText(const Sent& state, const std::string& locale) {
    return "안드로이드로 보냄: " + shortTimeText(state.at, locale);
}

std::string stateText(const Failed& state, const std::string& /*locale*/) {
    return state.text;
}

std::string stateText(const NoAccount& /*state*/, const std::string& /*locale*/) {
    return "시스템 설정에서 Apple 계정에 로그인해 주세요.";
}

std::string stateText(const Unavailable& /*state*/, const std::string& /*locale*/) {
    return "개발용 빌드라 안드로이드로 보내지 않아요.";
}

std::string stateText(const PhoneLinkPublisher::NotLinked& /*state*/,
                      const std::string& /*locale*/) {
    return "연결하지 않았어요.";
}

std::string stateText(const PhoneLinkPublisher::Paused& /*state*/, const std::string& /*locale*/) {
    return "모두 해제로 멈췄어요. QR 보기를 누르면 다시 보내요.";
}

PhoneLinkPublisher::State stateAfter(const PublicationFailure& failure) {
    const auto* error = std::get_if<CloudError>(&failure);
    const bool isSignedOut = error != nullptr && error->code == cloud_error_code::notAuthenticated;
    if (isSignedOut || std::holds_alternative<publication_failure::NoAccount>(failure)) {
        return NoAccount{};
    }
    if (error == nullptr) return Failed{"안드로이드로 보내지 못했어요."};
    if (const auto text = passingErrorText(*error)) return Failed{std::string(*text)};
    return Failed{"안드로이드로 보내지 못했어요 (오류 " + std::to_string(error->code) + ")."};
}

}  // namespace

PhoneLinkPublisher::PhoneLinkPublisher(Surroundings surroundings)
    : surroundings_(std::move(surroundings)), state_(Unavailable{}) {
    if (surroundings_.defaults != nullptr) {
        isPaused_ = surroundings_.defaults->boolean(settings_key::phoneLinkPaused).value_or(false);
    }
    refreshKey();
    if (canPublish()) state_ = restingState();
}

std::string PhoneLinkPublisher::displayText(const State& state, const std::string& locale) {
    return std::visit([&locale](const auto& which) { return stateText(which, locale); }, state);
}

PhoneLinkPublisher::State PhoneLinkPublisher::restingState() const {
    if (!key_) return NotLinked{};
    return isPaused_ ? State(Paused{}) : State(Waiting{});
}

std::optional<TaskEnd> PhoneLinkPublisher::publish(std::vector<SubscriptionLimits> limits,
                                                   Instant now) {
    latest_ = phoneLimits_.prepare(std::move(limits));
    if (!canPublish() || !isCurrent() || isSending() || !key_) return std::nullopt;
    const ContentDigest digest = PublishSchedule::contentDigest(*latest_);
    if (!schedule_.isDue(digest, now)) return std::nullopt;
    const TaskEnd end;
    sending_ = end;
    Content content{.limits = *latest_, .digest = digest, .key = *key_, .now = now};
    spawn(send(this, end, std::move(content)));
    return end;
}

QCoro::Task<> PhoneLinkPublisher::send(Publisher publisher, TaskEnd end, Content content) {
    const SleepEnd turn = co_await publisher->surroundings_.sleep(0ms);
    if (publisher && turn == SleepEnd::elapsed) {
        const TaskOutcome outcome = co_await outcomeOf(sendNow(publisher, content));
        if (publisher && outcome.failure && publisher->isCurrentFor(content.key)) {
            publisher->noteFailure(outcome.failure, content.now);
        }
        if (publisher) publisher->sending_.reset();
    }
    end.reach();
}

QCoro::Task<> PhoneLinkPublisher::sendNow(Publisher publisher, Content content) {
    const auto isCurrent = [publisher] { return publisher && publisher->isCurrent(); };
    if (!isCurrent()) co_return;
    ShareToSave share{.limits = content.limits,
                      .key = content.key,
                      .record = publisher->record_,
                      .now = content.now,
                      .isCurrent = isCurrent};
    CloudRecord record = co_await publisher->surroundings_.save(std::move(share));
    if (!publisher || !publisher->isCurrentFor(content.key)) co_return;
    publisher->noteSuccess(content, std::move(record));
}

void PhoneLinkPublisher::noteSuccess(const Content& content, CloudRecord record) {
    record_ = std::move(record);
    schedule_.noteSuccess(content.digest, content.now);
    qCInfo(phoneLog, "안드로이드로 보냄: 계정 %zu개", content.limits.size());
    setState(Sent{content.now});
}

void PhoneLinkPublisher::noteFailure(const std::exception_ptr& thrown, Instant now) {
    const PublicationFailure failure = publicationFailure(thrown);
    const std::optional<PublishSchedule::Wait> wait = waitAfter(failure);
    if (!wait) return;
    schedule_.noteFailure(now, *wait);
    qCCritical(phoneLog, "안드로이드로 못 보냄: %s", failureSummary(thrown).c_str());
    setState(stateAfter(failure));
}

void PhoneLinkPublisher::startAnew() {
    record_.reset();
    schedule_ = {};
}

void PhoneLinkPublisher::publishLatest() {
    if (latest_) publish(*latest_, surroundings_.now());
}

void PhoneLinkPublisher::takeIn(const std::optional<SymmetricKey>& key) {
    if (key_ == key) return;
    key_ = key;
    startAnew();
    emit keyChanged();
    if (canPublish()) setState(restingState());
}

void PhoneLinkPublisher::refreshKey() {
    try {
        takeIn(surroundings_.store->load());
    } catch (...) {
        const std::string summary = failureSummary(std::current_exception());
        qCCritical(phoneLog, "폰 연결 키를 읽지 못했다: %s", summary.c_str());
    }
}

void PhoneLinkPublisher::showLink() {
    if (isChanging_) return;
    PhoneKeyStore& store = *surroundings_.store;
    std::optional<SymmetricKey> key = store.load();
    if (!key) key = store.addIfAbsent(SymmetricKey::random(surroundings_.randomBytes));
    takeIn(key);
    if (isPaused_) {
        setPaused(false);
        startAnew();
        if (canPublish()) setState(Waiting{});
    }
    publishLatest();
}

void PhoneLinkPublisher::sendAnew() {
    schedule_ = {};
    if (canPublish()) setState(restingState());
}

// Waits until no send is under way.
QCoro::Task<> PhoneLinkPublisher::endOfSend(Publisher publisher) {
    while (publisher && publisher->sending_) {
        const TaskEnd sending = *publisher->sending_;
        co_await sending.wait();
    }
}

QCoro::Task<> PhoneLinkPublisher::rotate() {
    if (isChanging_) co_return;
    const Publisher publisher(this);
    setChanging(true);
    refreshKey();
    co_await endOfSend(publisher);
    if (!publisher) co_return;
    const std::optional<SymmetricKey> formerKey = key_;
    const SymmetricKey key = SymmetricKey::random(surroundings_.randomBytes);
    try {
        surroundings_.store->replace(key);
    } catch (...) {
        setChanging(false);
        throw;
    }
    takeIn(key);
    if (canPublish() && formerKey) {
        const TaskOutcome outcome = co_await outcomeOf(surroundings_.deleteRecord(*formerKey));
        if (outcome.failure) {
            qCCritical(phoneLog, "옛 기록을 지우지 못했다: %s",
                       failureSummary(outcome.failure).c_str());
        }
        if (!publisher) co_return;
    }
    setChanging(false);
    publishLatest();
}

QCoro::Task<> PhoneLinkPublisher::disconnect() {
    if (isChanging_) co_return;
    const Publisher publisher(this);
    setChanging(true);
    refreshKey();
    co_await endOfSend(publisher);
    const TaskOutcome outcome = co_await outcomeOf(deleteAll(publisher));
    if (!publisher) co_return;
    if (outcome.failure) {
        setChanging(false);
        std::rethrow_exception(outcome.failure);
    }
    setPaused(false);
    takeIn(std::nullopt);
    setChanging(false);
    qCInfo(phoneLog, "안드로이드 연결을 끊었다");
}

// The record first: the key must not be gone while the record is there.
QCoro::Task<> PhoneLinkPublisher::deleteAll(Publisher publisher) {
    if (!publisher) co_return;
    if (publisher->canPublish() && publisher->key_) {
        co_await publisher->surroundings_.deleteRecord(*publisher->key_);
    }
    if (publisher) publisher->surroundings_.store->remove();
}

QCoro::Task<> PhoneLinkPublisher::pause() {
    const Publisher publisher(this);
    setPaused(true);
    co_await endOfSend(publisher);
    if (!publisher) co_return;
    refreshKey();
    startAnew();
    if (!canPublish()) co_return;
    setState(restingState());
    if (!key_) co_return;
    const TaskOutcome outcome =
        co_await outcomeOf(surroundings_.removeMac(surroundings_.macId(), *key_));
    // Whoever resumed meanwhile may have sent what was taken back after that.
    if (publisher && !publisher->isPaused_) publisher->schedule_ = {};
    if (outcome.failure) std::rethrow_exception(outcome.failure);
    qCInfo(phoneLog, "모두 해제: 안드로이드 기록에서 이 맥의 몫을 뺐다");
}

void PhoneLinkPublisher::setState(State state) {
    if (state_ == state) return;
    state_ = std::move(state);
    emit stateChanged();
}

void PhoneLinkPublisher::setChanging(bool isChanging) {
    if (std::exchange(isChanging_, isChanging) != isChanging) emit isChangingChanged();
}

void PhoneLinkPublisher::setPaused(bool isPaused) {
    if (SettingsStore* defaults = surroundings_.defaults) {
        if (isPaused) {
            defaults->setBoolean(settings_key::phoneLinkPaused, true);
        } else {
            defaults->remove(settings_key::phoneLinkPaused);
        }
    }
    if (std::exchange(isPaused_, isPaused) != isPaused) emit isPausedChanged();
}

}  // namespace brimwatch
