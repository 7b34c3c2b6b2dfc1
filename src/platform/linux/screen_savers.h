// Whether a screen saver or locker of some desktop covers the screen.
//
// Each says so by a signal, from whatever connection: on GNOME two of them speak for one saver, one
// of which owns no name. What one has said lasts until it says otherwise or its connection ends, so
// that a locker that crashed leaves nothing behind. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "platform/linux/bus_service.h"

namespace brimwatch {

class ScreenSavers final : public QObject {
    Q_OBJECT

  public:
    // The connection must outlive this.
    explicit ScreenSavers(BusConnection& sessionBus);
    ScreenSavers(const ScreenSavers&) = delete;
    ScreenSavers& operator=(const ScreenSavers&) = delete;
    ~ScreenSavers() override;

    bool isAnyActive() const { return !active_.empty(); }

  signals:
    void changed();

  private:
    using Speaker = std::pair<QString, QString>;  // interface and unique name

    void listen();
    void forgetAll();
    void ask(BusService& saver, const QString& interface, const QStringList& paths);
    void hear(const QString& interface, const QDBusMessage& message);
    void take(const Speaker& speaker, const QVariant& isActive);
    void add(const Speaker& speaker);
    void remove(const Speaker& speaker);
    void removeMissing(const Speaker& speaker);

    BusConnection& bus_;
    std::unique_ptr<QObject> connection_;  // what lasts as long as the connection to the bus
    std::vector<std::unique_ptr<BusService>> savers_;
    std::map<QString, QString> asked_;  // the unique name that owes an answer, by interface
    std::map<Speaker, std::unique_ptr<BusService>> active_;
};

}  // namespace brimwatch
