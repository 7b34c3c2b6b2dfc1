// The keeper of the panel's items on the bus, org.kde.StatusNotifierWatcher, and who shows them.
//
// It comes late, dies with a panel and returns with the next one, which knows nothing of what was
// there before. Nothing here waits for an answer. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/event_loop_bus.h"

namespace brimwatch {

class NotifierWatcher final : public QObject {
    Q_OBJECT

  public:
    enum class Presence { unknown, absent, present };

    // The bus is open, and outlives it.
    explicit NotifierWatcher(EventLoopBus& bus);

    Presence presence() const { return presence_; }
    // False where it is known that no panel shows the items.
    bool hasHost() const { return hasHost_; }
    // Names of the programs that show the items, as far as they can be told. Nothing until the bus
    // has answered.
    const std::optional<QStringList>& hosts() const { return hosts_; }
    // The one at the usual path of that service. Items come in the order of the calls.
    void registerItem(const std::string& service) const;

  signals:
    // It is there, and it may be another one than before.
    void appeared();
    void vanished();
    void hostsChanged();

  private:
    static int noteOwnerChange(sd_bus_message* signal, void* watcher, sd_bus_error* error);
    static int noteHostChange(sd_bus_message* signal, void* watcher, sd_bus_error* error);

    void listen(const char* rule, sd_bus_message_handler_t hear);
    void askForOwner();
    void askForHosts();
    void askWhetherThereIsAHost();
    void askForNames();
    void noteNames(const std::vector<std::string>& names);
    void askForProcess(const std::string& owner);
    void setOwner(bool isThere);
    void noteProgram(const QString& program);

    EventLoopBus& bus_;
    std::vector<BusSlot> subscriptions_;
    Presence presence_ = Presence::unknown;
    bool hasHost_ = true;
    std::optional<QStringList> hosts_;
    QStringList foundHosts_;
    std::size_t missingHosts_ = 0;  // of those asked for last, without an answer yet
};

}  // namespace brimwatch
