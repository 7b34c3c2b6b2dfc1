#include "app/app_delegate.h"

#include <QPointer>
#include <utility>

namespace brimwatch {

AppDelegate::AppDelegate(Surroundings surroundings)
    : surroundings_(std::move(surroundings)),
      translator_(surroundings_.model),
      updates_(surroundings_.updater, surroundings_.openPage),
      settings_({.model = surroundings_.model,
                 .fileManager = surroundings_.fileManager,
                 .folderPicker = surroundings_.folderPicker,
                 .updates = updates_,
                 .window = [this] { return setupWindow_.window(); },
                 .canSignIn = surroundings_.canSignIn,
                 .signIn = surroundings_.signIn,
                 .showPhoneLink = [this] { showPhoneLink(); }}),
      setupWindow_([this] { return surroundings_.makeSetupWindow(settings_); }, surroundings_.quit),
      content_({.model = surroundings_.model,
                .now = surroundings_.now,
                .screenHeights = surroundings_.screenHeights,
                .openSetup = [this] { openSetupFromPopover(); },
                .quit = surroundings_.quit}),
      popover_([this] { return surroundings_.makePopover(content_); }) {
    connect(&surroundings_.model, &HelperModel::languageChanged, &updates_,
            &SetupUpdates::statusChanged);
    connect(&surroundings_.model, &HelperModel::languageChanged, &setupWindow_,
            &SetupWindow::translate);
    themeSoon_.setSingleShot(true);
    connect(&themeSoon_, &QTimer::timeout, this, &AppDelegate::applyTheme);
}

void AppDelegate::didFinishLaunching() {
    applyTextScale();
    connect(&surroundings_.appearance, &DesktopAppearance::textScaleChanged, this,
            &AppDelegate::applyTextScale);
    statusItem_.emplace(StatusItemController::Surroundings{.model = surroundings_.model,
                                                           .item = surroundings_.item,
                                                           .popover = popover_,
                                                           .session = surroundings_.session,
                                                           .appearance = surroundings_.appearance,
                                                           .timer = surroundings_.timer,
                                                           .uptime = surroundings_.uptime,
                                                           .rocket = surroundings_.rocket});
    menu_.emplace(StatusItemMenu::Surroundings{.model = surroundings_.model,
                                               .item = surroundings_.item,
                                               .now = surroundings_.now,
                                               .open = [this] { openPopover(); },
                                               .receiveNow = [this] { content_.receiveNow(); },
                                               .openSetup = [this] { openSetupFromPopover(); },
                                               .quit = surroundings_.quit});
    applyTheme();
    connect(&surroundings_.model, &HelperModel::appThemeChanged, this,
            [this] { themeSoon_.start(0); });
    connect(&surroundings_.appearance, &DesktopAppearance::darkChanged, this,
            &AppDelegate::applyTheme);
    surroundings_.updater.isBusy = [delegate = QPointer<AppDelegate>(this)] {
        return delegate && delegate->isBusy();
    };
    if (surroundings_.defaults.boolean(settings_key::setupDone) != true) setupWindow_.show();
}

bool AppDelegate::isBusy() const {
    if (!surroundings_.isApplicationActive()) return false;
    return setupWindow_.isVisible() || (statusItem_ && popover_.isShown());
}

void AppDelegate::reopen() {
    setupWindow_.show();
}

void AppDelegate::showPhoneLink() {
    if (!phoneLink_)
        phoneLink_.emplace(surroundings_.model.phone(), surroundings_.clipboard,
                           surroundings_.sleep);
    if (!phoneLinkWindow_) phoneLinkWindow_ = surroundings_.makePhoneLinkWindow(*phoneLink_);
    if (!phoneLinkWindow_) return;
    phoneLinkWindow_->setAppearance(appearance());
    phoneLinkWindow_->setTextScale(surroundings_.appearance.textScale());
    phoneLinkWindow_->show(setupWindow_.isVisible() ? setupWindow_.window() : nullptr);
    if (QWindow* window = phoneLinkWindow_->window()) setupWindow_.lendKeys(*window);
}

// A menu need not take the focus from it.
void AppDelegate::openPopover() {
    if (!popover_.isShown()) statusItem_->toggle(std::nullopt, {});
}

void AppDelegate::openSetupFromPopover() {
    popover_.performClose();
    setupWindow_.show();
}

Appearance AppDelegate::appearance() const {
    const AppTheme theme = surroundings_.model.appTheme();
    const bool isDark =
        theme == AppTheme::system ? surroundings_.appearance.isDark() : theme == AppTheme::dark;
    return isDark ? Appearance::dark : Appearance::light;
}

void AppDelegate::applyTheme() {
    setupWindow_.setAppearance(appearance());
    if (phoneLinkWindow_) phoneLinkWindow_->setAppearance(appearance());
}

void AppDelegate::applyTextScale() {
    const double scale = surroundings_.appearance.textScale();
    popover_.setTextScale(scale);
    setupWindow_.setTextScale(scale);
    if (phoneLinkWindow_) phoneLinkWindow_->setTextScale(scale);
}

}  // namespace brimwatch
