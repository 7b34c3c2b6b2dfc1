#include "platform/linux/application_interface.h"

namespace brimwatch {
namespace {

// Of Wayland, else of X11.
QString tokenOf(const QVariantMap& platformData) {
    QString token = platformData.value(QStringLiteral("activation-token")).toString();
    if (!token.isEmpty()) return token;
    return platformData.value(QStringLiteral("desktop-startup-id")).toString();
}

}  // namespace

ApplicationInterface::ApplicationInterface(QObject* exported) : QDBusAbstractAdaptor(exported) {}

void ApplicationInterface::Activate(const QVariantMap& platformData) {
    emit called(tokenOf(platformData));
}

void ApplicationInterface::Open(const QStringList& /*addresses*/, const QVariantMap& platformData) {
    emit called(tokenOf(platformData));
}

void ApplicationInterface::ActivateAction(const QString& /*action*/,
                                          const QVariantList& /*parameter*/,
                                          const QVariantMap& platformData) {
    emit called(tokenOf(platformData));
}

}  // namespace brimwatch
