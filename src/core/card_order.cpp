#include "core/card_order.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <utility>

namespace brimwatch {
namespace {

using Keys = std::vector<std::string>;

std::ptrdiff_t positionOf(std::string_view key, const Keys& keys) {
    return std::distance(keys.begin(), std::find(keys.begin(), keys.end(), key));
}

bool contains(const Keys& keys, std::string_view key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

Keys withUnshown(Keys shown, const Keys& order) {
    Keys unshown;
    std::copy_if(order.begin(), order.end(), std::back_inserter(unshown),
                 [&](const std::string& key) { return !contains(shown, key); });
    shown.insert(shown.end(), unshown.begin(), unshown.end());
    return shown;
}

}  // namespace

std::string cardKey(std::string_view id) {
    return "subscription." + std::string(id);
}

std::vector<SubscriptionLimits> inCardOrder(std::vector<SubscriptionLimits> limits,
                                            const Keys& order) {
    std::map<std::string_view, std::size_t, std::less<>> positions;
    for (std::size_t index = 0; index < order.size(); ++index)
        positions.emplace(order[index], index);
    const auto position = [&](const SubscriptionLimits& entry) {
        const auto found = positions.find(cardKey(entry.id()));
        return found != positions.end() ? found->second : order.size();
    };
    std::stable_sort(limits.begin(), limits.end(),
                     [&](const SubscriptionLimits& a, const SubscriptionLimits& b) {
                         return position(a) < position(b);
                     });
    return limits;
}

Keys movedBy(std::ptrdiff_t offset, std::string_view key, Keys shown, const Keys& order) {
    const std::ptrdiff_t from = positionOf(key, shown);
    const std::ptrdiff_t count = std::ssize(shown);
    if (offset == 0 || from == count || offset < -from || offset >= count - from) return order;
    std::string moved = std::move(shown[static_cast<std::size_t>(from)]);
    shown.erase(shown.begin() + from);
    shown.insert(shown.begin() + from + offset, std::move(moved));
    return withUnshown(std::move(shown), order);
}

Keys movedToPlaceOf(std::string_view target, std::string_view key, Keys shown, const Keys& order) {
    if (!contains(shown, target)) return order;
    const std::ptrdiff_t offset = positionOf(target, shown) - positionOf(key, shown);
    return movedBy(offset, key, std::move(shown), order);
}

}  // namespace brimwatch
