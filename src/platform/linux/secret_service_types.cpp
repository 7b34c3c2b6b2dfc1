#include "platform/linux/secret_service_types.h"

#include <QDBusMetaType>

namespace brimwatch {

QDBusArgument& operator<<(QDBusArgument& argument, const BusSecret& secret) {
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusSecret& secret) {
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument;
}

void registerSecretServiceTypes() {
    qDBusRegisterMetaType<BusSecret>();
    qDBusRegisterMetaType<BusAttributes>();
}

}  // namespace brimwatch
