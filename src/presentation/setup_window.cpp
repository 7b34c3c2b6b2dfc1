#include "presentation/setup_window.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <algorithm>
#include <iterator>
#include <utility>

#include "presentation/translated.h"

namespace brimwatch {

SetupWindow::SetupWindow(Make make, std::function<void()> quit) : make_(std::move(make)) {
    addAction("Brimwatch? 종료", QStringLiteral("Ctrl+Q"), std::move(quit));
    addAction("닫기", QStringLiteral("Ctrl+W"), [this] {
        if (QWindow* window = target()) window->close();
    });
    addAction("최소화", QStringLiteral("Ctrl+M"), [this] {
        QWindow* window = target();
        if (window != nullptr && window->isVisible()) window->showMinimized();
    });
}

bool SetupWindow::isVisible() const {
    return window() != nullptr && window()->isVisible();
}

void SetupWindow::show() {
    if (!sheet_) sheet_ = make_();
    if (!sheet_) return;
    sheet_->setAppearance(appearance_);
    sheet_->setTextScale(textScale_);
    sheet_->show(nullptr);
    if (window() == nullptr || watched_ == window()) return;
    watched_ = window();
    watched_->installEventFilter(this);
}

void SetupWindow::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    if (sheet_) sheet_->setAppearance(appearance);
}

void SetupWindow::setTextScale(double scale) {
    textScale_ = scale;
    if (sheet_) sheet_->setTextScale(scale);
}

QWindow* SetupWindow::window() const {
    return sheet_ ? sheet_->window() : nullptr;
}

std::vector<QAction*> SetupWindow::actions() const {
    std::vector<QAction*> actions;
    std::transform(actions_.begin(), actions_.end(), std::back_inserter(actions),
                   [](const Action& action) { return action.action.get(); });
    return actions;
}

void SetupWindow::translate() {
    for (const Action& action : actions_)
        action.action->setText(translated(action.text));
}

void SetupWindow::lendKeys(QWindow& window) {
    window.installEventFilter(this);
}

bool SetupWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return false;
    const auto* const key = dynamic_cast<QKeyEvent*>(event);
    if (key == nullptr) return false;
    const QKeySequence pressed(key->keyCombination());
    for (const Action& action : actions_) {
        if (action.action->shortcut() != pressed) continue;
        pressed_ = qobject_cast<QWindow*>(watched);
        action.action->trigger();
        pressed_.clear();
        return true;
    }
    return false;
}

void SetupWindow::addAction(const char* text, const QString& keys, std::function<void()> run) {
    auto action = std::make_unique<QAction>(translated(text));
    action->setShortcut(QKeySequence(keys));
    QObject::connect(action.get(), &QAction::triggered, action.get(),
                     [run = std::move(run)] { run(); });
    actions_.push_back({text, std::move(action)});
}

QWindow* SetupWindow::target() const {
    return pressed_ ? pressed_.data() : window();
}

}  // namespace brimwatch
