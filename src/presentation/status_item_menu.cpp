#include "presentation/status_item_menu.h"

#include <array>
#include <utility>

#include "presentation/status_menu.h"

namespace brimwatch {

StatusItemMenu::StatusItemMenu(Surroundings surroundings) : surroundings_(std::move(surroundings)) {
    soon_.setSingleShot(true);
    connect(&soon_, &QTimer::timeout, this, &StatusItemMenu::show);
    const HelperModel& model = surroundings_.model;
    for (const auto changed :
         std::to_array({&HelperModel::languageChanged, &HelperModel::limitsChanged,
                        &HelperModel::menuOrderChanged, &HelperModel::usageDisplayChanged})) {
        connect(&model, changed, this, [this] { soon_.start(0); });
    }
    // Rows also change with the time alone, of which the model tells nothing.
    connect(&surroundings_.item, &StatusItem::menuOpened, this, [this] {
        surroundings_.model.refresh();
        show();
    });
    connect(&surroundings_.item, &StatusItem::commandChosen, this, &StatusItemMenu::carryOut);
    show();
}

void StatusItemMenu::show() {
    surroundings_.item.setMenu(statusMenuRows(surroundings_.model, surroundings_.now()));
}

void StatusItemMenu::carryOut(int command) const {
    switch (static_cast<StatusMenuCommand>(command)) {
        case StatusMenuCommand::open:
            return surroundings_.open();
        case StatusMenuCommand::receiveNow:
            return surroundings_.receiveNow();
        case StatusMenuCommand::setup:
            return surroundings_.openSetup();
        case StatusMenuCommand::quit:
            return surroundings_.quit();
    }
}

}  // namespace brimwatch
