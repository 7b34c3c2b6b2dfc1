#include "platform/linux/bus_properties.h"

#include <QDBusArgument>
#include <map>
#include <memory>

namespace brimwatch {
namespace {

constexpr QLatin1String propertiesInterface("org.freedesktop.DBus.Properties");

// A change that was told while an answer was on its way counts more than the answer.
struct Changes {
    int count = 0;
    std::map<QString, int> latest;  // the number of the last change of each property

    void note(const QStringList& names) {
        ++count;
        for (const QString& name : names)
            latest[name] = count;
    }
    QVariantMap withoutOlder(QVariantMap properties, int countBefore) const {
        for (const auto& [name, number] : latest) {
            if (number > countBefore) properties.remove(name);
        }
        return properties;
    }
};

struct Watch {
    QString path;
    QString interface;
    std::function<void(const QVariantMap&)> told;
    Changes changes;
};

void readProperties(BusService& service, const std::shared_ptr<Watch>& watch) {
    service.call(watch->path, propertiesInterface, QStringLiteral("GetAll"), {watch->interface},
                 [watch, before = watch->changes.count](const QDBusMessage& answer) {
                     if (answer.type() != QDBusMessage::ReplyMessage) return;
                     if (answer.signature() != QLatin1String("a{sv}")) return;
                     const auto all = qdbus_cast<QVariantMap>(answer.arguments().at(0));
                     watch->told(watch->changes.withoutOlder(all, before));
                 });
}

void takeChange(BusService& service, const std::shared_ptr<Watch>& watch,
                const QDBusMessage& message) {
    if (message.signature() != QLatin1String("sa{sv}as")) return;
    const auto changed = qdbus_cast<QVariantMap>(message.arguments().at(1));
    const QStringList changedWithoutValue = message.arguments().at(2).toStringList();
    watch->changes.note(changed.keys() + changedWithoutValue);
    if (!changedWithoutValue.isEmpty()) readProperties(service, watch);
    watch->told(changed);
}

}  // namespace

void watchProperties(BusService& service, const QString& path, const QString& interface,
                     const std::function<void(const QVariantMap& properties)>& told) {
    const auto watch = std::make_shared<Watch>(Watch{path, interface, told, {}});
    service.listen(
        {.path = path,
         .interface = propertiesInterface,
         .name = QStringLiteral("PropertiesChanged"),
         .firstArgument = interface},
        [&service, watch](const QDBusMessage& message) { takeChange(service, watch, message); });
    readProperties(service, watch);
}

}  // namespace brimwatch
