#include "presentation/menu_content_model.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <utility>
#include <variant>

#include "platform/spawn.h"
#include "presentation/menu_cards.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds rebuildPeriod = 30s;

// A countdown changes with the seconds of the clock, as resets come at whole ones.
std::chrono::milliseconds untilNextSecond(Instant now) {
    const double seconds = unixSeconds(now);
    const double left = std::floor(seconds) + 1 - seconds;
    return std::chrono::milliseconds(std::lround(std::ceil(left * 1000)));
}

}  // namespace

MenuContentModel::MenuContentModel(Surroundings surroundings)
    : surroundings_(std::move(surroundings)), listHeight_(cardListHeight({})) {
    modelChanged_.setSingleShot(true);
    modelChanged_.setInterval(0);
    period_.setInterval(rebuildPeriod);
    countdown_.setSingleShot(true);
    countdown_.setTimerType(Qt::PreciseTimer);
    connect(&modelChanged_, &QTimer::timeout, this, &MenuContentModel::rebuild);
    connect(&period_, &QTimer::timeout, this, &MenuContentModel::rebuild);
    connect(&countdown_, &QTimer::timeout, this, &MenuContentModel::countDown);
    observe(&HelperModel::limitsChanged);
    observe(&HelperModel::menuOrderChanged);
    observe(&HelperModel::receivedCodexChanged);
    observe(&HelperModel::usageDisplayChanged);
    observe(&HelperModel::recentUsagePeriodChanged);
    observe(&HelperModel::languageChanged);
    connect(&surroundings_.model, &HelperModel::languageChanged, this,
            &MenuContentModel::languageChanged);
    connect(&surroundings_.model.cloud(), &CloudPublisher::stateChanged, this,
            &MenuContentModel::scheduleRebuild);
}

void MenuContentModel::observe(void (HelperModel::*changed)()) {
    connect(&surroundings_.model, changed, this, &MenuContentModel::scheduleRebuild);
}

QString MenuContentModel::emptyText() {
    return translated("아직 받은 한도가 없어요. 설정에서 Claude Code와 Codex를 연결해 주세요.");
}

void MenuContentModel::setShown(bool shown) {
    if (isShown_ == shown) return;
    isShown_ = shown;
    if (isShown_) {
        rebuild();
        period_.start();
    } else {
        modelChanged_.stop();
        period_.stop();
        countdown_.stop();
    }
}

void MenuContentModel::scheduleRebuild() {
    if (isShown_ && !modelChanged_.isActive()) modelChanged_.start();
}

void MenuContentModel::rebuild() {
    const Instant now = surroundings_.now();
    cards_ = menuCards(surroundings_.model, now, surroundings_.model.locale());
    std::vector<UsageCardContent> contents;
    std::transform(cards_.begin(), cards_.end(), std::back_inserter(contents), content);
    cardsModel_.setCards(contents);
    assign(isEmpty_, cards_.empty(), &MenuContentModel::isEmptyChanged);
    assign(canReorder_, cards_.size() >= 2, &MenuContentModel::canReorderChanged);
    assign(listHeight_, cardListHeight(surroundings_.screenHeights()),
           &MenuContentModel::listHeightChanged);
    readSending();
    scheduleCountdown(now);
}

void MenuContentModel::readSending() {
    const CloudPublisher::State& state = surroundings_.model.cloud().state();
    const QString text =
        translated(CloudPublisher::displayText(state, surroundings_.model.locale()));
    const bool isFailure = std::holds_alternative<publication::Failed>(state) ||
                           std::holds_alternative<publication::NoAccount>(state);
    if (sendingText_ == text && isSendingFailure_ == isFailure) return;
    sendingText_ = text;
    isSendingFailure_ = isFailure;
    emit sendingChanged();
}

void MenuContentModel::countDown() {
    const Instant now = surroundings_.now();
    const auto wasReset = [now](const SubscriptionUsageCard& card) {
        return wasResetSince(card, now);
    };
    if (std::any_of(cards_.begin(), cards_.end(), wasReset)) return rebuild();
    std::vector<UsageCardContent> contents = cardsModel_.cards();
    for (std::size_t index = 0; index < cards_.size(); ++index)
        updateCountdowns(contents[index], cards_[index], now);
    cardsModel_.setCards(contents);
    scheduleCountdown(now);
}

void MenuContentModel::scheduleCountdown(Instant now) {
    const bool isCounting = std::any_of(
        cards_.begin(), cards_.end(),
        [now](const SubscriptionUsageCard& card) { return hasLiveCountdown(card, now); });
    if (isCounting) {
        countdown_.start(untilNextSecond(now));
    } else {
        countdown_.stop();
    }
}

void MenuContentModel::receiveNow() {
    spawn(surroundings_.model.pollCodex());
    surroundings_.model.refresh();
}

void MenuContentModel::openSetup() const {
    surroundings_.openSetup();
}

void MenuContentModel::reorderCards() {
    surroundings_.model.setRevealsMenuCardOrder(true);
    openSetup();
}

void MenuContentModel::quit() const {
    surroundings_.quit();
}

}  // namespace brimwatch
