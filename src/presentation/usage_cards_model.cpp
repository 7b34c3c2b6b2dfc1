#include "presentation/usage_cards_model.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <utility>
#include <variant>

namespace brimwatch {
namespace {

using Content = UsageCardContent;
using Field =
    std::variant<QString Content::*, bool Content::*, double Content::*, UsageLevel Content::*>;

struct Role {
    const char* name;
    Field field;
};

constexpr int firstRole = Qt::UserRole + 1;
constexpr std::array roles = {
    Role{"provider", &Content::provider},
    Role{"account", &Content::account},
    Role{"identifierSuffix", &Content::identifierSuffix},
    Role{"cardKey", &Content::cardKey},
    Role{"title", &Content::title},
    Role{"plan", &Content::plan},
    Role{"hasMainWindow", &Content::hasMainWindow},
    Role{"amount", &Content::amount},
    Role{"amountSuffix", &Content::amountSuffix},
    Role{"gaugeFraction", &Content::gaugeFraction},
    Role{"gaugeLabel", &Content::gaugeLabel},
    Role{"gaugeValue", &Content::gaugeValue},
    Role{"level", &Content::level},
    Role{"statusText", &Content::statusText},
    Role{"statusSymbol", &Content::statusSymbol},
    Role{"resetText", &Content::resetText},
    Role{"resetLabel", &Content::resetLabel},
    Role{"hasSecondWindow", &Content::hasSecondWindow},
    Role{"fiveHourText", &Content::fiveHourText},
    Role{"fiveHourPassed", &Content::fiveHourPassed},
    Role{"fiveHourLevel", &Content::fiveHourLevel},
    Role{"fiveHourResetText", &Content::fiveHourResetText},
    Role{"fiveHourResetLabel", &Content::fiveHourResetLabel},
    Role{"hasRecentUsage", &Content::hasRecentUsage},
    Role{"recentTitle", &Content::recentTitle},
    Role{"recentText", &Content::recentText},
    Role{"credit", &Content::credit},
    Role{"creditLabel", &Content::creditLabel},
    Role{"freshness", &Content::freshness},
    Role{"needsAttention", &Content::needsAttention},
};

QVariant toVariant(UsageLevel level) {
    return static_cast<int>(level);
}

template <class Value>
QVariant toVariant(const Value& value) {
    return value;
}

QVariant valueOf(const Content& content, const Role& role) {
    return std::visit([&content](auto field) { return toVariant(content.*field); }, role.field);
}

QList<int> changedRoles(const Content& former, const Content& content) {
    QList<int> changed;
    for (std::size_t index = 0; index < roles.size(); ++index) {
        if (valueOf(former, roles[index]) == valueOf(content, roles[index])) continue;
        changed.append(firstRole + static_cast<int>(index));
    }
    return changed;
}

// The places of one longest rising row among the numbers, which are all different.
std::vector<std::size_t> longestRise(const std::vector<std::ptrdiff_t>& numbers) {
    constexpr std::size_t none = -1;
    std::vector<std::size_t> length(numbers.size(), 1);
    std::vector<std::size_t> before(numbers.size(), none);
    for (std::size_t last = 0; last < numbers.size(); ++last) {
        for (std::size_t place = 0; place < last; ++place) {
            if (numbers[place] > numbers[last] || length[place] < length[last]) continue;
            length[last] = length[place] + 1;
            before[last] = place;
        }
    }
    std::vector<std::size_t> rise;
    const auto longest = std::max_element(length.begin(), length.end());
    std::size_t place =
        longest == length.end() ? none : static_cast<std::size_t>(longest - length.begin());
    for (; place != none; place = before[place])
        rise.push_back(place);
    return rise;
}

bool contains(const std::vector<QString>& keys, const QString& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

}  // namespace

void UsageCardsModel::setCards(const std::vector<UsageCardContent>& cards) {
    const Keys keys = distinctKeys(cards);
    removeAllBut(keys);
    arrange(keys);
    for (std::size_t index = 0; index < cards.size(); ++index) {
        const int row = static_cast<int>(index);
        if (rowOf(keys[index]) == -1) {
            insertRow(row, {keys[index], cards[index]});
        } else {
            updateRow(row, cards[index]);
        }
    }
}

std::vector<UsageCardContent> UsageCardsModel::cards() const {
    std::vector<UsageCardContent> cards;
    std::transform(rows_.begin(), rows_.end(), std::back_inserter(cards),
                   [](const Row& row) { return row.content; });
    return cards;
}

int UsageCardsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant UsageCardsModel::data(const QModelIndex& index, int role) const {
    const int roleCount = static_cast<int>(roles.size());
    if (!index.isValid() || index.row() >= rowCount()) return {};
    if (role < firstRole || role >= firstRole + roleCount) return {};
    return valueOf(rows_[static_cast<std::size_t>(index.row())].content,
                   roles[static_cast<std::size_t>(role - firstRole)]);
}

QHash<int, QByteArray> UsageCardsModel::roleNames() const {
    QHash<int, QByteArray> names;
    for (std::size_t index = 0; index < roles.size(); ++index)
        names.insert(firstRole + static_cast<int>(index), roles[index].name);
    return names;
}

UsageCardsModel::Keys UsageCardsModel::distinctKeys(const std::vector<UsageCardContent>& cards) {
    Keys keys;
    std::map<QString, int> counts;
    for (const UsageCardContent& card : cards)
        keys.push_back(card.cardKey + '#' + QString::number(counts[card.cardKey]++));
    return keys;
}

int UsageCardsModel::rowOf(const QString& key) const {
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [&key](const Row& each) { return each.key == key; });
    return row == rows_.end() ? -1 : static_cast<int>(row - rows_.begin());
}

void UsageCardsModel::removeAllBut(const Keys& keys) {
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (contains(keys, rows_[static_cast<std::size_t>(row)].key)) continue;
        beginRemoveRows({}, row, row);
        rows_.erase(rows_.begin() + row);
        endRemoveRows();
    }
}

// Every row that does not rest comes behind the one that precedes it in `keys`.
void UsageCardsModel::arrange(const Keys& keys) {
    const Keys resting = restingKeys(keys);
    int place = 0;
    for (const QString& key : keys) {
        const int row = rowOf(key);
        if (row == -1) continue;
        if (!contains(resting, key)) moveRow(row, place);
        place = rowOf(key) + 1;
    }
}

void UsageCardsModel::moveRow(int row, int place) {
    if (!beginMoveRows({}, row, row, {}, place)) return;
    const auto begin = rows_.begin();
    if (row < place) {
        std::rotate(begin + row, begin + row + 1, begin + place);
    } else {
        std::rotate(begin + place, begin + row, begin + row + 1);
    }
    endMoveRows();
}

// As many rows as can stay where they are while the others move.
UsageCardsModel::Keys UsageCardsModel::restingKeys(const Keys& keys) const {
    std::vector<std::ptrdiff_t> places;
    std::transform(rows_.begin(), rows_.end(), std::back_inserter(places), [&keys](const Row& row) {
        return std::find(keys.begin(), keys.end(), row.key) - keys.begin();
    });
    Keys resting;
    for (const std::size_t row : longestRise(places))
        resting.push_back(rows_[row].key);
    return resting;
}

void UsageCardsModel::insertRow(int row, Row inserted) {
    beginInsertRows({}, row, row);
    rows_.insert(rows_.begin() + row, std::move(inserted));
    endInsertRows();
}

void UsageCardsModel::updateRow(int row, const UsageCardContent& content) {
    UsageCardContent& former = rows_[static_cast<std::size_t>(row)].content;
    const QList<int> changed = changedRoles(former, content);
    if (changed.isEmpty()) return;
    former = content;
    emit dataChanged(index(row), index(row), changed);
}

}  // namespace brimwatch
