// The types of the views that stand in a room without Qt Quick, under their names in QML. The
// linter needs their whole names.
#pragma once

#include <QQmlEngine>

#include "presentation/menu_content_model.h"
#include "presentation/phone_link_sheet.h"
#include "presentation/usage_cards_model.h"

namespace brimwatch {

struct MenuContentModelType {
    Q_GADGET
    QML_FOREIGN(brimwatch::MenuContentModel)
    QML_NAMED_ELEMENT(MenuContentModel)
    QML_UNCREATABLE("made by the program")
};

struct PhoneLinkSheetType {
    Q_GADGET
    QML_FOREIGN(brimwatch::PhoneLinkSheet)
    QML_NAMED_ELEMENT(PhoneLinkSheetModel)
    QML_UNCREATABLE("made by the program")
};

struct UsageCardsModelType {
    Q_GADGET
    QML_FOREIGN(brimwatch::UsageCardsModel)
    QML_ANONYMOUS
};

}  // namespace brimwatch
