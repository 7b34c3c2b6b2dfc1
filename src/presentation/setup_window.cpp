#include "presentation/setup_window.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <QPainter>
#include <QRasterWindow>
#include <algorithm>
#include <iterator>
#include <utility>

#include "presentation/colors.h"

namespace brimwatch {

class SetupWindow::Surface final : public QRasterWindow {
  public:
    explicit Surface(const SetupWindow& owner) : owner_(owner) {
        setTitle(QStringLiteral("Brimwatch?"));
        resize(460, 520);
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter(this).fillRect(QRect(QPoint(), size()),
                                colors::surfaceFill.in(owner_.appearance_));
    }

    // By itself: shortcuts of Qt know windows only where there are no widgets in the program.
    void keyPressEvent(QKeyEvent* event) override {
        const QKeySequence pressed(event->keyCombination());
        for (QAction* action : owner_.actions()) {
            if (action->shortcut() == pressed) return action->trigger();
        }
        QRasterWindow::keyPressEvent(event);
    }

  private:
    const SetupWindow& owner_;
};

SetupWindow::SetupWindow(std::function<void()> quit) {
    addAction(QObject::tr("Brimwatch? 종료"), QStringLiteral("Ctrl+Q"), std::move(quit));
    addAction(QObject::tr("닫기"), QStringLiteral("Ctrl+W"), [this] {
        if (surface_) surface_->close();
    });
    addAction(QObject::tr("최소화"), QStringLiteral("Ctrl+M"), [this] {
        if (isVisible()) surface_->showMinimized();
    });
}

SetupWindow::~SetupWindow() = default;

bool SetupWindow::isVisible() const {
    return surface_ && surface_->isVisible();
}

void SetupWindow::show() {
    if (!surface_) surface_ = std::make_unique<Surface>(*this);
    if (surface_->isVisible() && surface_->windowState() != Qt::WindowMinimized) {
        surface_->raise();
    } else {
        surface_->showNormal();
    }
    surface_->requestActivate();
}

void SetupWindow::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    if (surface_) surface_->update();
}

QWindow* SetupWindow::window() const {
    return surface_.get();
}

std::vector<QAction*> SetupWindow::actions() const {
    std::vector<QAction*> actions;
    std::transform(actions_.begin(), actions_.end(), std::back_inserter(actions),
                   [](const std::unique_ptr<QAction>& action) { return action.get(); });
    return actions;
}

void SetupWindow::addAction(const QString& text, const QString& keys, std::function<void()> run) {
    auto action = std::make_unique<QAction>(text);
    action->setShortcut(QKeySequence(keys));
    QObject::connect(action.get(), &QAction::triggered, action.get(),
                     [run = std::move(run)] { run(); });
    actions_.push_back(std::move(action));
}

}  // namespace brimwatch
