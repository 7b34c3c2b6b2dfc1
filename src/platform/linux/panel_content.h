// What the item of the panel shows, whichever kind of panel shows it.
#pragma once

#include <QImage>
#include <QString>
#include <vector>

#include "platform/status_item.h"

namespace brimwatch {

struct PanelContent {
    QString number;
    QImage picture;
    std::vector<StatusItem::MenuRow> rows;
    StatusItem::Look look;

    // What the item is called.
    QString title() const;
    // The texts among the rows, one a line.
    QString description() const;
};

}  // namespace brimwatch
