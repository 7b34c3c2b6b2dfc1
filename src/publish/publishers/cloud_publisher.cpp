#include "publish/publishers/cloud_publisher.h"

#include <QLoggingCategory>
#include <chrono>
#include <utility>

#include "limits/short_time_text.h"
#include "platform/spawn.h"
#include "publish/limits_cloud.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using publication::Failed;
using publication::NoAccount;
using publication::Sent;
using publication::Unavailable;
using publication::Waiting;

const QLoggingCategory& cloudLog() {
    static const QLoggingCategory category("net.quillmoor.brimwatch.mac.cloud");
    return category;
}

std::string stateText(const Waiting& /*state*/, const std::string& /*locale*/) {
    return "보낼 한도를 기다리고 있어요.";
}

std::string stateText(const Sent& state, const std::string& locale) {
    return "iPhone으로 보냄: " + shortTimeText(state.at, locale);
}

std::string stateText(const Failed& state, const std::string& /*locale*/) {
    return state.text;
}

std::string stateText(const NoAccount& /*state*/, const std::string& /*locale*/) {
    return "시스템 설정에서 Apple 계정에 로그인해 주세요.";
}

std::string stateText(const Unavailable& /*state*/, const std::string& /*locale*/) {
    return "개발용 빌드라 iPhone으로 보내지 않아요.";
}

std::string stateText(const CloudPublisher::Off& /*state*/, const std::string& /*locale*/) {
    return "iPhone으로 보내지 않아요.";
}

std::string errorText(const CloudError& error) {
    switch (error.code) {
        case cloud_error_code::badContainer:
        case cloud_error_code::missingEntitlement:
        case cloud_error_code::permissionFailure:
            return "보내기 설정에 문제가 있어요 (오류 " + std::to_string(error.code) + ").";
        default:
            return std::string(passingErrorText(error).value_or(error.description));
    }
}

}  // namespace

CloudPublisher::CloudPublisher(Surroundings surroundings)
    : surroundings_(std::move(surroundings)), state_(Unavailable{}) {
    const SettingsStore* defaults = surroundings_.defaults;
    isEnabled_ =
        defaults == nullptr || defaults->boolean(settings_key::cloudEnabled).value_or(true);
    if (surroundings_.right == PublishingRight::missing) return;
    state_ = isEnabled_ ? State(Waiting{}) : State(Off{});
}

std::string CloudPublisher::displayText(const State& state, const std::string& locale) {
    return std::visit([&locale](const auto& which) { return stateText(which, locale); }, state);
}

bool CloudPublisher::isAvailable() const {
    return !std::holds_alternative<Unavailable>(state_);
}

bool CloudPublisher::isCurrent(std::int64_t revision) const {
    return revision == revision_ && isEnabled_;
}

std::optional<TaskEnd> CloudPublisher::publish(std::vector<SubscriptionLimits> limits,
                                               Instant now) {
    latest_ = std::move(limits);
    if (!isEnabled_ || !isAvailable() || isSending()) return std::nullopt;
    const ContentDigest digest = PublishSchedule::contentDigest(*latest_);
    if (!schedule_.isDue(digest, now)) return std::nullopt;
    const TaskEnd end;
    sending_ = end;
    spawn(send(this, end, {.limits = *latest_, .digest = digest, .revision = revision_}));
    return end;
}

QCoro::Task<> CloudPublisher::send(Publisher publisher, TaskEnd end, Content content) {
    const SleepEnd turn = co_await publisher->surroundings_.sleep(0ms);
    if (publisher && turn == SleepEnd::elapsed) {
        const Instant now = publisher->surroundings_.now();
        const TaskOutcome outcome = co_await outcomeOf(sendNow(publisher, content, now));
        if (publisher && outcome.failure && publisher->isCurrent(content.revision)) {
            publisher->noteFailure(publicationFailure(outcome.failure), now);
        }
        if (publisher) publisher->finishSend(content.revision);
    }
    end.reach();
}

QCoro::Task<> CloudPublisher::sendNow(Publisher publisher, Content content, Instant now) {
    const std::int64_t revision = content.revision;
    if (!publisher->isCurrent(revision)) co_return;
    const SymmetricKey key = publisher->surroundings_.loadKey();
    const auto isCurrent = [publisher, revision] {
        return publisher && publisher->isCurrent(revision);
    };
    if (!isCurrent()) co_return;
    ShareToSave share{.limits = content.limits,
                      .key = key,
                      .record = publisher->record_,
                      .now = now,
                      .isCurrent = isCurrent};
    CloudRecord record = co_await publisher->surroundings_.save(std::move(share));
    if (isCurrent()) publisher->noteSuccess(content, std::move(record), now);
}

void CloudPublisher::noteSuccess(const Content& content, CloudRecord record, Instant now) {
    record_ = std::move(record);
    schedule_.noteSuccess(content.digest, now);
    qCInfo(cloudLog, "보냄: 계정 %zu개", content.limits.size());
    setState(Sent{now});
}

void CloudPublisher::noteFailure(const PublicationFailure& failure, Instant now) {
    if (const auto wait = waitAfter(failure)) schedule_.noteFailure(now, *wait);
    std::visit([this](const auto& kind) { show(kind); }, failure);
}

void CloudPublisher::show(const publication_failure::Stopped& /*failure*/) {}

void CloudPublisher::show(const publication_failure::NoAccount& /*failure*/) {
    qCCritical(cloudLog, "iCloud 로그인 안 됨");
    setState(NoAccount{});
}

void CloudPublisher::show(const CloudError& error) {
    record_.reset();
    qCCritical(cloudLog, "CloudKit 오류 %d: %s", error.code, error.description.c_str());
    const bool isSignedOut = error.code == cloud_error_code::notAuthenticated;
    setState(isSignedOut ? State(NoAccount{}) : State(Failed{errorText(error)}));
}

void CloudPublisher::show(const publication_failure::SharedKeyRefused& failure) {
    qCCritical(cloudLog, "키체인 오류 %d", failure.status);
    setState(Failed{"연결 키를 저장하지 못했어요 (오류 " + std::to_string(failure.status) +
                    "). 시스템 설정에서 암호 동기화가 켜져 있는지 확인해 주세요."});
}

void CloudPublisher::show(const publication_failure::Other& failure) {
    qCCritical(cloudLog, "못 보냄: %s", failure.description.c_str());
    setState(Failed{failure.description});
}

void CloudPublisher::finishSend(std::int64_t revision) {
    sending_.reset();
    if (revision != revision_ && latest_) publish(*latest_, surroundings_.now());
}

void CloudPublisher::switchOn() {
    if (isRemoving()) return;
    setEnabled(true);
    schedule_ = {};
    if (isAvailable()) setState(Waiting{});
}

QCoro::Task<> CloudPublisher::switchOff() {
    const bool isFirst = !isRemoving();
    const TaskEnd end = isFirst ? removal_.emplace() : *removal_;
    if (isFirst) {
        ++revision_;
        emit isRemovingChanged();
        setEnabled(false);
        if (isAvailable()) setState(Off{});
        spawn(removeNow(this, end));
    }
    co_await end.wait();
}

QCoro::Task<> CloudPublisher::removeNow(Publisher publisher, TaskEnd end) {
    const TaskOutcome outcome = co_await outcomeOf(withdraw(publisher));
    if (publisher) {
        publisher->removal_.reset();
        emit publisher->isRemovingChanged();
    }
    end.reach(outcome.failure);
}

QCoro::Task<> CloudPublisher::withdraw(Publisher publisher) {
    if (publisher->sending_) {
        const TaskEnd sending = *publisher->sending_;
        co_await sending.wait();
        if (!publisher) co_return;
    }
    publisher->record_.reset();
    publisher->schedule_ = {};
    if (!publisher->isAvailable()) co_return;
    co_await publisher->surroundings_.remove();
    qCInfo(cloudLog, "보낸 값을 지웠다");
}

void CloudPublisher::setState(State state) {
    if (state_ == state) return;
    state_ = std::move(state);
    emit stateChanged();
}

void CloudPublisher::setEnabled(bool isEnabled) {
    if (surroundings_.defaults != nullptr) {
        surroundings_.defaults->setBoolean(settings_key::cloudEnabled, isEnabled);
    }
    if (std::exchange(isEnabled_, isEnabled) != isEnabled) emit isEnabledChanged();
}

}  // namespace brimwatch
