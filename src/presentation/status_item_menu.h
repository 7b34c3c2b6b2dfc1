// Keeps the menu of the status item true to the model, and does what is chosen in it. Main thread.
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

#include "core/helper_model.h"
#include "platform/status_item.h"
#include "support/instant.h"

namespace brimwatch {

class StatusItemMenu final : public QObject {
  public:
    // What is referred to must outlive the menu.
    struct Surroundings {
        HelperModel& model;
        StatusItem& item;
        std::function<Instant()> now;
        std::function<void()> open;
        std::function<void()> receiveNow;
        std::function<void()> openSetup;
        std::function<void()> quit;
    };

    explicit StatusItemMenu(Surroundings surroundings);

  private:
    void show();
    void carryOut(int command) const;

    Surroundings surroundings_;
    QTimer soon_;  // joins the changes of one turn of the event loop
};

}  // namespace brimwatch
