// The types of the views that stand in a room without Qt Quick, under their names in QML. The
// linter needs their whole names.
#pragma once

#include <QQmlEngine>

#include "presentation/menu_content_model.h"
#include "presentation/phone_link_sheet.h"
#include "presentation/setup/setup_view_model.h"
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

struct SetupViewModelType {
    Q_GADGET
    QML_FOREIGN(brimwatch::SetupViewModel)
    QML_NAMED_ELEMENT(SetupViewModel)
    QML_UNCREATABLE("made by the program")
};

struct SetupUpdatesType {
    Q_GADGET
    QML_FOREIGN(brimwatch::SetupUpdates)
    QML_NAMED_ELEMENT(SetupUpdates)
    QML_UNCREATABLE("made by the program")
};

struct ClaudeSectionType {
    Q_GADGET
    QML_FOREIGN(brimwatch::ClaudeSection)
    QML_NAMED_ELEMENT(ClaudeSectionModel)
    QML_UNCREATABLE("made by the program")
};

struct CodexSectionType {
    Q_GADGET
    QML_FOREIGN(brimwatch::CodexSection)
    QML_NAMED_ELEMENT(CodexSectionModel)
    QML_UNCREATABLE("made by the program")
};

struct CardOrderSectionType {
    Q_GADGET
    QML_FOREIGN(brimwatch::CardOrderSection)
    QML_NAMED_ELEMENT(CardOrderSectionModel)
    QML_UNCREATABLE("made by the program")
};

struct PhonesSectionType {
    Q_GADGET
    QML_FOREIGN(brimwatch::PhonesSection)
    QML_NAMED_ELEMENT(PhonesSectionModel)
    QML_UNCREATABLE("made by the program")
};

struct GeneralSectionType {
    Q_GADGET
    QML_FOREIGN(brimwatch::GeneralSection)
    QML_NAMED_ELEMENT(GeneralSectionModel)
    QML_UNCREATABLE("made by the program")
};

struct AddAccountFolderType {
    Q_GADGET
    QML_FOREIGN(brimwatch::AddAccountFolder)
    QML_NAMED_ELEMENT(AddAccountFolderModel)
    QML_UNCREATABLE("made by the program")
};

struct AccountRowsModelType {
    Q_GADGET
    QML_FOREIGN(brimwatch::AccountRowsModel)
    QML_ANONYMOUS
};

struct KeyedRowsModelType {
    Q_GADGET
    QML_FOREIGN(brimwatch::KeyedRowsModel)
    QML_ANONYMOUS
};

struct UsageCardsModelType {
    Q_GADGET
    QML_FOREIGN(brimwatch::UsageCardsModel)
    QML_ANONYMOUS
};

}  // namespace brimwatch
