// The window with the sheet of the link to an Android phone. Its engine is made when it is first
// shown; a sheet that can't be made is logged, and nothing opens. Main thread.
#pragma once

#include <QObject>
#include <memory>

#include "presentation/appearance.h"
#include "presentation/phone_link_sheet.h"

class QQmlEngine;
class QQuickView;

namespace brimwatch {

class ViewPalette;

class PhoneLinkWindow final : public QObject {
  public:
    // The sheet must outlive the window.
    explicit PhoneLinkWindow(PhoneLinkSheet& sheet);
    PhoneLinkWindow(const PhoneLinkWindow&) = delete;
    PhoneLinkWindow& operator=(const PhoneLinkWindow&) = delete;
    ~PhoneLinkWindow() override;

    // Brings it forward if it is shown already.
    void show();
    void setAppearance(Appearance appearance);
    void setTextScale(double scale);

    // None before the first showing.
    QQuickView* window() const { return window_.get(); }

  private:
    bool makeWindow();

    PhoneLinkSheet& sheet_;
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<QQuickView> window_;
    ViewPalette* palette_ = nullptr;  // of the engine
};

}  // namespace brimwatch
