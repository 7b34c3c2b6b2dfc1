// What the user calls the cards, and in which order they come.

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/card_order.h"
#include "core/helper_model.h"
#include "limits/usage_name.h"

namespace brimwatch {

void HelperModel::setUsageName(const std::string& key, const std::optional<std::string>& name) {
    setFailure(std::nullopt);
    const std::optional<std::string> normalized = name ? normalizedUsageName(*name) : std::nullopt;
    Texts names = usageNames_;
    if (normalized) {
        names.insert_or_assign(cardKey(key), *normalized);
    } else {
        names.erase(cardKey(key));
    }
    assign(usageNames_, std::move(names), &HelperModel::usageNamesChanged);
    surroundings_.defaults.setDictionary(settings_key::usageNames, usageNames_);
    reload();
}

std::vector<std::string> HelperModel::shownCardKeys() const {
    const std::vector<SubscriptionLimits> shown = menuLimits();
    std::vector<std::string> keys;
    std::transform(shown.begin(), shown.end(), std::back_inserter(keys),
                   [](const SubscriptionLimits& entry) { return cardKey(entry.id()); });
    return keys;
}

void HelperModel::moveCard(const std::string& id, std::ptrdiff_t offset) {
    setFailure(std::nullopt);
    setMenuOrder(movedBy(offset, id, shownCardKeys(), menuOrder_));
}

void HelperModel::moveCard(const std::string& id, const std::string& before) {
    setFailure(std::nullopt);
    setMenuOrder(movedToPlaceOf(before, id, shownCardKeys(), menuOrder_));
}

void HelperModel::resetCardOrder() {
    setFailure(std::nullopt);
    setMenuOrder({});
}

void HelperModel::setMenuOrder(std::vector<std::string> order) {
    if (!assign(menuOrder_, std::move(order), &HelperModel::menuOrderChanged)) return;
    surroundings_.defaults.setStrings(settings_key::menuOrder, menuOrder_);
}

}  // namespace brimwatch
