#include "platform/linux/screen_savers.h"

#include <array>

#include "platform/linux/bus_values.h"

namespace brimwatch {
namespace {

constexpr QLatin1String commonSaver("org.freedesktop.ScreenSaver");

// Each is the name of the service and of the interface.
constexpr std::array<QLatin1String, 5> saverNames = {
    commonSaver, QLatin1String("org.gnome.ScreenSaver"), QLatin1String("org.cinnamon.ScreenSaver"),
    QLatin1String("org.mate.ScreenSaver"), QLatin1String("org.xfce.ScreenSaver")};

QStringList objectPaths(const QString& name) {
    QStringList paths = {QLatin1Char('/') +
                         QString(name).replace(QLatin1Char('.'), QLatin1Char('/'))};
    // Where older versions of Plasma have it.
    if (name == commonSaver) paths << QStringLiteral("/ScreenSaver");
    return paths;
}

}  // namespace

ScreenSavers::ScreenSavers(BusConnection& sessionBus) : bus_(sessionBus) {
    connect(&bus_, &BusConnection::connected, this, &ScreenSavers::listen);
    connect(&bus_, &BusConnection::disconnected, this, &ScreenSavers::forgetAll);
    if (bus_.isConnected()) listen();
    for (const QString name : saverNames) {
        savers_.push_back(std::make_unique<BusService>(bus_, name));
        BusService& saver = *savers_.back();
        connect(&saver, &BusService::ownerChanged, this,
                [this, &saver, name] { ask(saver, name, objectPaths(name)); });
    }
}

ScreenSavers::~ScreenSavers() = default;

void ScreenSavers::listen() {
    connection_ = std::make_unique<QObject>();
    for (const QString name : saverNames) {
        bus_.listen({.interface = name, .name = QStringLiteral("ActiveChanged")}, connection_.get(),
                    [this, name](const QDBusMessage& message) { hear(name, message); });
    }
}

void ScreenSavers::forgetAll() {
    connection_.reset();
    if (active_.empty()) return;
    active_.clear();
    emit changed();
}

void ScreenSavers::ask(BusService& saver, const QString& interface, const QStringList& paths) {
    if (paths.isEmpty()) return;
    const Speaker speaker(interface, saver.owner());
    asked_[interface] = saver.owner();
    saver.call(paths.front(), interface, QStringLiteral("GetActive"), {},
               [this, &saver, speaker, paths](const QDBusMessage& answer) {
                   if (asked_.erase(speaker.first) == 0) return;
                   if (answer.type() == QDBusMessage::ReplyMessage)
                       return take(speaker, answer.arguments().value(0));
                   ask(saver, speaker.first, paths.mid(1));
               });
}

void ScreenSavers::hear(const QString& interface, const QDBusMessage& message) {
    // It counts more than an answer that is still on its way.
    const auto asked = asked_.find(interface);
    if (asked != asked_.end() && asked->second == message.service()) asked_.erase(asked);
    take({interface, message.service()}, message.arguments().value(0));
}

void ScreenSavers::take(const Speaker& speaker, const QVariant& isActive) {
    const auto active = valueOf<bool>(isActive);
    if (!active) return;
    if (*active) {
        add(speaker);
    } else {
        remove(speaker);
    }
}

void ScreenSavers::add(const Speaker& speaker) {
    if (active_.contains(speaker)) return;
    auto watch = std::make_unique<BusService>(bus_, speaker.second);
    // Queued, because it is removed by that and must not be in the middle of its signal.
    connect(
        watch.get(), &BusService::ownerChanged, this, [this, speaker] { removeMissing(speaker); },
        Qt::QueuedConnection);
    active_.emplace(speaker, std::move(watch));
    if (active_.size() == 1) emit changed();
}

void ScreenSavers::remove(const Speaker& speaker) {
    if (active_.erase(speaker) > 0 && active_.empty()) emit changed();
}

void ScreenSavers::removeMissing(const Speaker& speaker) {
    const auto found = active_.find(speaker);
    if (found != active_.end() && found->second->isMissing()) remove(speaker);
}

}  // namespace brimwatch
