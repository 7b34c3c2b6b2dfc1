// The window with the sheet of the link to an Android phone, modal for the window that it is shown
// for. Its engine is made when it is first shown; a sheet that can't be made is logged, and nothing
// opens. Main thread.
#pragma once

#include <QQuickView>
#include <memory>

#include "platform/desktop_appearance.h"
#include "presentation/phone_link_sheet.h"
#include "presentation/sheet_window.h"

class QQmlEngine;

namespace brimwatch {

class ViewPalette;

class PhoneLinkWindow final : public SheetWindow {
  public:
    // Both must outlive the window; without a desktop there is motion, and the usual contrast.
    explicit PhoneLinkWindow(PhoneLinkSheet& sheet, const DesktopAppearance* desktop = nullptr);
    PhoneLinkWindow(const PhoneLinkWindow&) = delete;
    PhoneLinkWindow& operator=(const PhoneLinkWindow&) = delete;
    ~PhoneLinkWindow() override;

    void show(QWindow* parent) override;
    void setAppearance(Appearance appearance) override;
    void setTextScale(double scale) override;

    QQuickView* window() const override { return window_.get(); }

  private:
    bool makeWindow();

    PhoneLinkSheet& sheet_;
    const DesktopAppearance* desktop_;
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<QQuickView> window_;
    ViewPalette* palette_ = nullptr;  // of the engine
};

}  // namespace brimwatch
