#include "presentation/status_menu.h"

#include <QStringList>
#include <algorithm>
#include <iterator>

#include "limits/usage_percent.h"
#include "presentation/menu_cards.h"
#include "presentation/subscription_usage_card.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

using Row = StatusItem::MenuRow;

QString figuresText(const SubscriptionLimits& limits, UsageDisplay display, Instant now) {
    QStringList parts;
    if (limits.sevenDay) {
        parts += mainWindowTitle(limits) + ' ' + percentText(*limits.sevenDay, display);
    }
    if (limits.fiveHour) {
        parts += translated("5시간") + ' ' + fiveHourValueText(*limits.fiveHour, display, now);
    }
    return parts.join(" · ");
}

Row accountRow(const SubscriptionLimits& limits, TitleAccount account, UsageDisplay display,
               Instant now) {
    Row row{.kind = Row::Kind::text, .id = 0, .label = {}};
    row.label = QString::fromStdString(limits.title(account));
    const QString figures = figuresText(limits, display, now);
    if (!figures.isEmpty()) row.label += " — " + figures;
    return row;
}

Row command(StatusMenuCommand command, const char* label) {
    return {
        .kind = Row::Kind::command, .id = static_cast<int>(command), .label = translated(label)};
}

}  // namespace

std::vector<Row> statusMenuRows(const HelperModel& model, Instant now) {
    const std::vector<SubscriptionLimits> shown = model.menuLimits();
    std::vector<Row> rows;
    std::transform(shown.begin(), shown.end(), std::back_inserter(rows),
                   [&](const SubscriptionLimits& limits) {
                       return accountRow(limits, titleAccount(limits, shown), model.usageDisplay(),
                                         now);
                   });
    if (!rows.empty()) rows.push_back({.kind = Row::Kind::separator, .id = 0, .label = {}});
    rows.push_back(command(StatusMenuCommand::open, "열기"));
    rows.push_back(command(StatusMenuCommand::receiveNow, "지금 새로 받기"));
    rows.push_back(command(StatusMenuCommand::setup, "설정…"));
    rows.push_back(command(StatusMenuCommand::quit, "종료"));
    return rows;
}

}  // namespace brimwatch
