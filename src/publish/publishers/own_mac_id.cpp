#include "publish/publishers/own_mac_id.h"

#include <QUuid>

namespace brimwatch {

MacId ownMacId(SettingsStore& defaults) {
    if (std::optional<std::string> stored = defaults.string(settings_key::macID)) {
        return {*std::move(stored)};
    }
    const QString text = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    MacId made{text.toStdString()};
    defaults.setString(settings_key::macID, made.text);
    return made;
}

}  // namespace brimwatch
