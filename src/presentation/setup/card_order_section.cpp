#include "presentation/setup/card_order_section.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/card_order.h"
#include "presentation/menu_cards.h"

namespace brimwatch {

CardOrderSection::CardOrderSection(HelperModel& model)
    : KeyedRowsModel({"key", "title", "isDragged"}), model_(model) {
    connect(&model, &HelperModel::revealsMenuCardOrderChanged, this,
            &CardOrderSection::isRevealedChanged);
}

void CardOrderSection::update() {
    // Its row goes without a word of the view.
    if (!dragging_.isEmpty() && !hasCard(dragging_)) {
        dragging_.clear();
        emit draggingChanged();
    }
    const std::vector<SubscriptionLimits> shown = model_.menuLimits();
    std::vector<Row> rows;
    for (const SubscriptionLimits& limits : shown) {
        const QString key = QString::fromStdString(cardKey(limits.id()));
        const QString title = QString::fromStdString(limits.title(titleAccount(limits, shown)));
        rows.push_back({.key = key, .values = {key, title, key == dragging_}});
    }
    setRows(std::move(rows));
    if (std::exchange(isShown_, shown.size() >= 2) != isShown_) emit isShownChanged();
}

void CardOrderSection::moveUp(const QString& key) {
    model_.moveCard(key.toStdString(), -1);
    update();
}

void CardOrderSection::moveDown(const QString& key) {
    model_.moveCard(key.toStdString(), 1);
    update();
}

void CardOrderSection::reset() {
    model_.resetCardOrder();
    update();
}

void CardOrderSection::drag(const QString& key) {
    setDragging(key);
}

void CardOrderSection::enter(const QString& target) {
    if (dragging_.isEmpty() || dragging_ == target) return;
    model_.moveCard(dragging_.toStdString(), target.toStdString());
    update();
}

bool CardOrderSection::hasCard(const QString& key) const {
    const std::vector<SubscriptionLimits> shown = model_.menuLimits();
    return std::any_of(shown.begin(), shown.end(), [&key](const SubscriptionLimits& limits) {
        return cardKey(limits.id()) == key.toStdString();
    });
}

void CardOrderSection::drop() {
    setDragging({});
}

void CardOrderSection::setDragging(const QString& key) {
    if (std::exchange(dragging_, key) == key) return;
    emit draggingChanged();
    update();
}

}  // namespace brimwatch
