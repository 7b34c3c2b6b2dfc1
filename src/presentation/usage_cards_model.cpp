#include "presentation/usage_cards_model.h"

#include <algorithm>
#include <array>
#include <iterator>
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

QList<QByteArray> cardRoles() {
    QList<QByteArray> names;
    for (const Role& role : roles)
        names.append(role.name);
    return names;
}

KeyedRowsModel::Row toRow(const Content& card) {
    KeyedRowsModel::Row row{.key = card.cardKey, .values = {}};
    for (const Role& role : roles)
        row.values.append(valueOf(card, role));
    return row;
}

}  // namespace

UsageCardsModel::UsageCardsModel() : KeyedRowsModel(cardRoles()) {}

void UsageCardsModel::setCards(const std::vector<UsageCardContent>& cards) {
    cards_ = cards;
    std::vector<Row> rows;
    std::transform(cards.begin(), cards.end(), std::back_inserter(rows), toRow);
    setRows(std::move(rows));
}

}  // namespace brimwatch
