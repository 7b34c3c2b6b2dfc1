#include "presentation/setup/phones_section.h"

#include <utility>
#include <variant>

#include "platform/spawn.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

template <class State>
bool hasNoAccount(const State& state) {
    return std::holds_alternative<publication::NoAccount>(state);
}

template <class State>
bool needsAttention(const State& state) {
    return hasNoAccount(state) || std::holds_alternative<publication::Failed>(state);
}

}  // namespace

PhonesSection::PhonesSection(Surroundings surroundings) : surroundings_(std::move(surroundings)) {
    const HelperModel& model = surroundings_.model;
    connect(&model.cloud(), &CloudPublisher::isEnabledChanged, this,
            &PhonesSection::sendsToIPhoneChanged);
    connect(&model.cloud(), &CloudPublisher::stateChanged, this,
            &PhonesSection::iPhoneStatusChanged);
    connect(&model.phone(), &PhoneLinkPublisher::stateChanged, this,
            &PhonesSection::androidStatusChanged);
    connect(&model, &HelperModel::languageChanged, this, &PhonesSection::iPhoneStatusChanged);
    connect(&model, &HelperModel::languageChanged, this, &PhonesSection::androidStatusChanged);
}

bool PhonesSection::sendsToIPhone() const {
    return surroundings_.model.cloud().isEnabled();
}

QString PhonesSection::iPhoneStatus() const {
    const HelperModel& model = surroundings_.model;
    return translated(CloudPublisher::displayText(model.cloud().state(), model.locale()));
}

bool PhonesSection::iPhoneNeedsAttention() const {
    return needsAttention(surroundings_.model.cloud().state());
}

bool PhonesSection::iPhoneOffersSignIn() const {
    return hasNoAccount(surroundings_.model.cloud().state()) && surroundings_.canSignIn();
}

QString PhonesSection::androidStatus() const {
    const HelperModel& model = surroundings_.model;
    return translated(PhoneLinkPublisher::displayText(model.phone().state(), model.locale()));
}

bool PhonesSection::androidNeedsAttention() const {
    return needsAttention(surroundings_.model.phone().state());
}

bool PhonesSection::androidOffersSignIn() const {
    return hasNoAccount(surroundings_.model.phone().state()) && surroundings_.canSignIn();
}

void PhonesSection::setSendsToIPhone(bool sends) {
    spawn(surroundings_.model.setCloudEnabled(sends));
}

void PhonesSection::signIn() const {
    surroundings_.signIn();
}

void PhonesSection::showPhoneLink() const {
    surroundings_.showPhoneLink();
}

}  // namespace brimwatch
