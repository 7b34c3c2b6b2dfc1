// The controller of the item over a model and a desktop in the hands of a test.
#pragma once

#include <QCoreApplication>
#include <QGuiApplication>
#include <QImage>
#include <memory>
#include <string>

#include "model_fixture.h"
#include "presentation/menu_bar_renderer.h"
#include "presentation/menu_bar_rocket.h"
#include "presentation/status_item_controller.h"
#include "scripted_desktop.h"

namespace brimwatch::test {

class StatusItemControllerFixture : public ModelFixture {
  protected:
    // Percentages that are used; the weekly one drives the rocket.
    void useWeek(double sevenDay) {
        writeLimits("claude-default", 10, sevenDay);
        model().reload();
    }

    StatusItemController& show() {
        controller_ = std::make_unique<StatusItemController>(
            StatusItemController::Surroundings{.model = model(),
                                               .item = desktop_.item,
                                               .popover = desktop_.popover,
                                               .session = desktop_.session,
                                               .appearance = desktop_.appearance,
                                               .timer = desktop_.timer,
                                               .uptime = [this] { return uptime_; },
                                               .rocket = sharedRocket()});
        return *controller_;
    }

    // With an account of Claude Code.
    void startWithWeek(double usedWeek) {
        makeRegisteredFolder(".claude");
        start();
        model().refresh();
        useWeek(usedWeek);
    }
    // Starts with that much of the week used, and with the rocket flying.
    StatusItemController& fly(double usedWeek) {
        startWithWeek(usedWeek);
        return show();
    }

    void letPass(double time) {
        uptime_ += time;
        if (desktop_.timer.isRunning()) desktop_.timer.tick();
    }

    static void settle() { QCoreApplication::processEvents(); }

    // What the renderer makes of those values, in the ink and scale of the item.
    QImage picture(double remaining, double angle) {
        MenuBarRenderer renderer(*sharedRocket());
        const StatusItem::Look look = desktop_.item.look();
        return renderer.render({remaining, angle, {}}, look.ink, look.scale)->copy();
    }

    int argumentCount_ = 1;
    std::string name_ = "presentation_test";
    char* arguments_[2] = {name_.data(), nullptr};
    QGuiApplication application_{argumentCount_, arguments_};
    ScriptedDesktop desktop_;
    double uptime_ = 1000;
    std::unique_ptr<StatusItemController> controller_;
};

}  // namespace brimwatch::test
