#include "presentation/setup/setup_view_model.h"

#include <optional>
#include <utility>

#include "platform/spawn.h"
#include "presentation/translated.h"

namespace brimwatch {

SetupViewModel::SetupViewModel(const Surroundings& surroundings)
    : model_(surroundings.model),
      claude_(surroundings.model, surroundings.fileManager),
      codex_(surroundings.model, surroundings.fileManager),
      cardOrder_(surroundings.model),
      phones_({.model = surroundings.model,
               .canSignIn = surroundings.canSignIn,
               .signIn = surroundings.signIn,
               .showPhoneLink = surroundings.showPhoneLink}),
      general_(surroundings.model, surroundings.updates),
      addFolder_({.model = surroundings.model,
                  .folderPicker = surroundings.folderPicker,
                  .window = surroundings.window}) {
    modelChanged_.setSingleShot(true);
    modelChanged_.setInterval(0);
    connect(&modelChanged_, &QTimer::timeout, this, &SetupViewModel::update);
    connect(&model_, &HelperModel::languageChanged, this, &SetupViewModel::languageChanged);
    connect(&model_, &HelperModel::isRemovingChanged, this, &SetupViewModel::isRemovingChanged);
    connect(&model_, &HelperModel::removedEverythingChanged, this,
            &SetupViewModel::removedEverythingChanged);
    for (const auto changed :
         {&HelperModel::accountsChanged, &HelperModel::claudeUsagePausedChanged,
          &HelperModel::codexAccountsChanged, &HelperModel::codexSelectionChanged,
          &HelperModel::codexEnabledChanged, &HelperModel::codexAccountStatusesChanged,
          &HelperModel::usageNamesChanged, &HelperModel::limitsChanged,
          &HelperModel::menuOrderChanged, &HelperModel::isRemovingChanged,
          &HelperModel::failureChanged, &HelperModel::languageChanged})
        observe(changed);
    // Nothing that is observed tells of a folder that was only declined.
    connect(&addFolder_, &AddAccountFolder::dismissed, this, &SetupViewModel::scheduleUpdate);
}

void SetupViewModel::observe(void (HelperModel::*changed)()) {
    connect(&model_, changed, this, &SetupViewModel::scheduleUpdate);
}

QString SetupViewModel::promise() {
    return translated("AI 서비스 **약관**을 지키고, **AI 로그인 정보**는 수집하지 않아요.");
}

QString SetupViewModel::spokenPromise() {
    return promise().remove(QStringLiteral("**"));
}

void SetupViewModel::setShown(bool shown) {
    if (isShown_ == shown) return;
    isShown_ = shown;
    if (isShown_) {
        update();
    } else {
        modelChanged_.stop();
    }
}

void SetupViewModel::scheduleUpdate() {
    if (isShown_ && !modelChanged_.isActive()) modelChanged_.start();
}

void SetupViewModel::update() {
    modelChanged_.stop();
    claude_.update();
    codex_.update();
    cardOrder_.update();
    const std::optional<std::string>& failure = model_.failure();
    const QString text = failure ? translated(*failure) : QString();
    if (std::exchange(failure_, text) != text) emit failureChanged();
}

void SetupViewModel::clearFailure() {
    model_.clearFailure();
}

void SetupViewModel::setUsageName(const QString& id, const QString& name) {
    model_.setUsageName(id.toStdString(),
                        name.isEmpty() ? std::nullopt : std::optional(name.toStdString()));
}

void SetupViewModel::removeEverything() {
    spawn(model_.removeEverything());
}

}  // namespace brimwatch
