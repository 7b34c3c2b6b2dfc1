// The keeper of the panel's items on the bus, org.kde.StatusNotifierWatcher, and who shows them.
//
// It comes late, dies with a panel and returns with the next one, which knows nothing of what was
// there before. Nothing here waits for an answer. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace brimwatch {

class NotifierWatcher final : public QObject {
    Q_OBJECT

  public:
    enum class Presence { unknown, absent, present };

    explicit NotifierWatcher(const QDBusConnection& connection);

    Presence presence() const { return presence_; }
    // False where it is known that no panel shows the items.
    bool hasHost() const { return hasHost_; }
    // Names of the programs that show the items, as far as they can be told. Nothing until the bus
    // has answered.
    const std::optional<QStringList>& hosts() const { return hosts_; }
    // The one at the usual path of that service. Items come in the order of the calls.
    void registerItem(const QString& service) const;

  signals:
    // It is there, and it may be another one than before.
    void appeared();
    void vanished();
    void hostsChanged();

  private:
    Q_SLOT void noteOwner(const QString& name, const QString& former, const QString& owner);
    Q_SLOT void noteFirstOwner(const QString& owner);
    Q_SLOT void noteNoOwner();
    Q_SLOT void askForHosts();
    Q_SLOT void noteHasHost(const QDBusVariant& hasHost);
    Q_SLOT void noteNames(const QStringList& names);
    Q_SLOT void noteProcess(uint process);
    Q_SLOT void noteNoProcess();
    Q_SLOT void ignoreError() {}

    void setOwner(const QString& owner);
    void askBus(const QString& method, const QVariantList& arguments, const char* answer,
                const char* failure = SLOT(ignoreError()));

    QDBusConnection connection_;
    QDBusServiceWatcher owners_;
    Presence presence_ = Presence::unknown;
    bool hasHost_ = true;
    std::optional<QStringList> hosts_;
    QStringList foundHosts_;
    qsizetype missingHosts_ = 0;  // of those asked for last, without an answer yet
};

}  // namespace brimwatch
