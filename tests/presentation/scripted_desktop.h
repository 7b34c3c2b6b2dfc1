// A desktop in the hands of a test: doors that remember what was shown and say what they are told.
#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/desktop_appearance.h"
#include "platform/session_events.h"
#include "platform/status_item.h"
#include "presentation/frame_timer.h"
#include "presentation/popover.h"

namespace brimwatch::test {

class ScriptedStatusItem final : public StatusItem {
  public:
    void show() override { ++showCount; }
    bool isVisible() const override { return isVisible_; }
    Look look() const override { return look_; }
    void setTitle(const QString& text) override { title = text.toStdString(); }
    void setPicture(const QImage& shown) override {
        picture = shown.copy();
        ++pictureCount;
    }
    void setMenu(const std::vector<MenuRow>& rows) override { menu = rows; }

    void setLook(const Look& look) {
        look_ = look;
        emit lookChanged();
    }
    void setVisible(bool visible) {
        isVisible_ = visible;
        emit visibilityChanged();
    }
    void click(std::optional<QPoint> position = std::nullopt) { emit activated(position, {}); }

    int showCount = 0;
    int pictureCount = 0;
    std::string title;
    QImage picture;
    std::vector<MenuRow> menu;

  private:
    Look look_{.isDark = false, .ink = Qt::black, .scale = 1};
    bool isVisible_ = true;
};

class ScriptedPopover final : public Popover {
  public:
    bool isShown() const override { return isShown_; }
    void show(std::optional<QPoint> place, const QString& /*activationToken*/) override {
        click = place;
        emit willShow();
        note("will show ");
        isShown_ = true;
        emit didShow();
        note("did show ");
    }
    void performClose() override {
        if (isShown_) loseFocus();
    }
    void setAppearance(Appearance wanted) override { appearance = wanted; }
    void setTextScale(double scale) override { textScale = scale; }

    void loseFocus() {
        emit willClose();
        isShown_ = false;
        emit didClose();
    }

    std::optional<QPoint> click;
    std::optional<Appearance> appearance;
    std::optional<double> textScale;
    std::vector<std::string> log;

  private:
    void note(const std::string& event) {
        const char* look = !appearance                       ? "without a look"
                           : *appearance == Appearance::dark ? "dark"
                                                             : "light";
        log.push_back(event + look);
    }

    bool isShown_ = false;
};

class ScriptedSession final : public SessionEvents {
  public:
    bool areScreensAsleep() const override { return areScreensAsleep_; }
    bool isSessionActive() const override { return isSessionActive_; }

    void setScreensAsleep(bool asleep) {
        areScreensAsleep_ = asleep;
        emit screensAsleepChanged();
    }
    void setSessionActive(bool active) {
        isSessionActive_ = active;
        emit sessionActiveChanged();
    }

  private:
    bool areScreensAsleep_ = false;
    bool isSessionActive_ = true;
};

class ScriptedAppearance final : public DesktopAppearance {
  public:
    bool isDark() const override { return isDark_; }
    bool reducesMotion() const override { return reducesMotion_; }
    bool increasesContrast() const override { return increasesContrast_; }
    double textScale() const override { return textScale_; }

    void setDark(bool dark) {
        isDark_ = dark;
        emit darkChanged();
    }
    void setReducesMotion(bool reduces) {
        reducesMotion_ = reduces;
        emit motionChanged();
    }
    void setIncreasesContrast(bool increases) {
        increasesContrast_ = increases;
        emit contrastChanged();
    }
    void setTextScale(double scale) {
        textScale_ = scale;
        emit textScaleChanged();
    }

  private:
    bool isDark_ = false;
    bool reducesMotion_ = false;
    bool increasesContrast_ = false;
    double textScale_ = 1;
};

class ScriptedFrameTimer final : public FrameTimer {
  public:
    void start(std::function<void()> called) override { tick = std::move(called); }
    void stop() override { tick = nullptr; }
    bool isRunning() const override { return tick != nullptr; }

    std::function<void()> tick;
};

struct ScriptedDesktop {
    ScriptedStatusItem item;
    ScriptedPopover popover;
    ScriptedSession session;
    ScriptedAppearance appearance;
    ScriptedFrameTimer timer;
};

}  // namespace brimwatch::test
