#include "platform/linux/xfce_panel_shade.h"

#include <QDBusMessage>

namespace brimwatch {

namespace {

constexpr QLatin1String serviceName("org.xfce.Xfconf");
constexpr QLatin1String objectPath("/org/xfce/Xfconf");
constexpr QLatin1String panelChannel("xfce4-panel");
constexpr QLatin1String darkMode("/panels/dark-mode");

}  // namespace

XfcePanelShade::XfcePanelShade(QDBusConnection connection) {
    connection.connect(serviceName, objectPath, serviceName, QStringLiteral("PropertyChanged"),
                       this, SLOT(noteChange(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName,
                                                       QStringLiteral("GetProperty"));
    call.setArguments({QString(panelChannel), QString(darkMode)});
    connection.callWithCallback(call, this, SLOT(noteSetting(QDBusVariant)), SLOT(ignoreError()));
}

void XfcePanelShade::noteSetting(const QDBusVariant& value) {
    const bool isDark = value.variant().toBool();
    if (isDark == isDark_) return;
    isDark_ = isDark;
    emit changed();
}

void XfcePanelShade::noteChange(const QString& channel, const QString& name,
                                const QDBusVariant& value) {
    if (channel == panelChannel && name == darkMode) noteSetting(value);
}

}  // namespace brimwatch
