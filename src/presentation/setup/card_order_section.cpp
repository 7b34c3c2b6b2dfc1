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
    if (!dragging_.isEmpty() && placeOf(dragging_) < 0) {
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

// By an offset: before the next card below it, it would stay where it is.
void CardOrderSection::enter(const QString& target) {
    const std::ptrdiff_t from = placeOf(dragging_);
    const std::ptrdiff_t to = placeOf(target);
    if (from < 0 || to < 0 || from == to) return;
    model_.moveCard(dragging_.toStdString(), to - from);
    update();
}

std::ptrdiff_t CardOrderSection::placeOf(const QString& key) const {
    const std::vector<SubscriptionLimits> shown = model_.menuLimits();
    const auto found = std::find_if(shown.begin(), shown.end(), [&key](const auto& limits) {
        return cardKey(limits.id()) == key.toStdString();
    });
    return found != shown.end() ? found - shown.begin() : -1;
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
