// The popover, drawn by Qt Quick.
//
// The engine and the window are made when it is first shown; afterwards the window is hidden and
// shown again, which takes a fiftieth of the time, while destroying it would give hardly any memory
// back. A content that can't be made is logged, and nothing opens. Main thread.
#pragma once

#include <QPoint>
#include <QUrl>
#include <QWindow>
#include <functional>
#include <memory>
#include <optional>

#include "platform/desktop_appearance.h"
#include "presentation/menu_content_model.h"
#include "presentation/popover.h"

class QQmlEngine;
class QQuickView;

namespace brimwatch {

class PopoverWindow;
class ViewPalette;

class QuickPopover final : public Popover {
    Q_OBJECT

  public:
    struct Surroundings {
        // Both outlive the popover; without a desktop there is motion, and the usual contrast.
        MenuContentModel& content;
        const DesktopAppearance* desktop = nullptr;
        // Whether what lies behind a window shows through where the window is transparent. Asked at
        // each opening.
        std::function<bool()> blendsWindows = [] { return true; };
        // Whether windows stand where the compositor wants them, and not where they want to.
        std::function<bool()> compositorPlaces = [] { return false; };
        // Asks for the focus, with the token that is in the environment meanwhile, if any.
        std::function<void(QWindow& window)> activate = [](QWindow& window) {
            window.requestActivate();
        };
        QUrl view = QUrl(QStringLiteral("qrc:/qt/qml/Brimwatch/MenuContent.qml"));
    };

    explicit QuickPopover(Surroundings surroundings);
    QuickPopover(const QuickPopover&) = delete;
    QuickPopover& operator=(const QuickPopover&) = delete;
    ~QuickPopover() override;

    bool isShown() const override { return state_ == State::shown; }
    void show(std::optional<QPoint> click, const QString& activationToken) override;
    void performClose() override;
    void setAppearance(Appearance appearance) override;
    void setTextScale(double scale) override;

    // None before the first opening.
    QQuickView* window() const;

  private:
    enum class State { closed, opening, shown, closing };

    bool makeWindow();
    void activate(const QString& token);
    void place();

    Surroundings surroundings_;
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    State state_ = State::closed;
    QPoint click_;  // in pixels of the screen
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<PopoverWindow> window_;
    ViewPalette* palette_ = nullptr;  // of the engine
};

}  // namespace brimwatch
