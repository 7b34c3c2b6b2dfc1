#include "platform/linux/panel_content.h"

#include <QStringList>

namespace brimwatch {

QString PanelContent::title() const {
    const QString name = QStringLiteral("Brimwatch?");
    return number.isEmpty() ? name : name + u' ' + number;
}

QString PanelContent::description() const {
    QStringList lines;
    for (const StatusItem::MenuRow& row : rows)
        if (row.kind == StatusItem::MenuRow::Kind::text) lines.append(row.label);
    return lines.join(u'\n');
}

}  // namespace brimwatch
