// The window with the settings. Its engine is made when it is first shown, and its size decided
// then; a window that can't be made is logged, and nothing opens. Main thread.
#pragma once

#include <QQuickView>
#include <functional>
#include <memory>
#include <optional>

#include "platform/desktop_appearance.h"
#include "presentation/setup/setup_view_model.h"
#include "presentation/sheet_window.h"

class QQmlEngine;

namespace brimwatch {

class ViewPalette;

class QuickSetupWindow final : public SheetWindow {
  public:
    struct Surroundings {
        // Both outlive the window; without a desktop there is motion, and the usual contrast.
        SetupViewModel& settings;
        const DesktopAppearance* desktop = nullptr;
        // What the main screen leaves to windows; none if there is no screen.
        std::function<std::optional<QRect>()> screen = primaryScreen;
    };

    explicit QuickSetupWindow(Surroundings surroundings);
    QuickSetupWindow(const QuickSetupWindow&) = delete;
    QuickSetupWindow& operator=(const QuickSetupWindow&) = delete;
    ~QuickSetupWindow() override;

    void show(QWindow* parent) override;
    void setAppearance(Appearance appearance) override;
    void setTextScale(double scale) override;
    QQuickView* window() const override { return window_.get(); }

    static std::optional<QRect> primaryScreen();

  private:
    bool makeWindow();
    void takeSize(QQuickView& window) const;

    Surroundings surroundings_;
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<QQuickView> window_;
    ViewPalette* palette_ = nullptr;  // of the engine
};

}  // namespace brimwatch
