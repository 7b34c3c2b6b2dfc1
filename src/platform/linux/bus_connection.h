// A connection to a message bus that may not be there, may die and may come back.
//
// A bus that can't be had is tried again after pauses that grow, so that a desktop without one
// costs a few wake-ups an hour. The death of a bus is told by a signal and ends nothing else. No
// call waits: an answer comes from the event loop, and a service that gives none counts as one that
// fails after `Timing::answer`. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariant>
#include <chrono>
#include <functional>

#include "support/environment.h"

namespace brimwatch {

// As the environment names it, else the bus in the runtime folder, else nothing: none is started.
QString sessionBusAddress(const Environment& environment);
// As the environment names it, else the usual one.
QString systemBusAddress(const Environment& environment);

struct BusCall {
    enum class Start { never, ifNeeded };  // of the service

    QString service;
    QString path;
    QString interface;
    QString method;
    QVariantList arguments = {};
    Start start = Start::never;

    QDBusMessage message() const;
};

struct BusSignal {
    QString service = {};  // the unique name of the sender, or empty for any
    QString path = {};     // empty for any
    QString interface;
    QString name;
    QString firstArgument = {};  // empty for any
};

// How long to wait before a bus is asked for again: twice as long each time, until a connection has
// lasted longer than the longest pause.
class BusPauses {
  public:
    using Milliseconds = std::chrono::milliseconds;

    BusPauses(Milliseconds first, Milliseconds longest)
        : first_(first), longest_(longest), next_(first) {}

    Milliseconds afterFailure();
    Milliseconds afterConnection(Milliseconds lasted);

  private:
    Milliseconds first_;
    Milliseconds longest_;
    Milliseconds next_;
};

class BusConnection final : public QObject {
    Q_OBJECT

  public:
    struct Timing {
        std::chrono::milliseconds firstPause{1000};
        std::chrono::milliseconds longestPause{std::chrono::minutes(20)};
        std::chrono::milliseconds answer{5000};
    };
    // The answer of a service, or an error message.
    using Answered = std::function<void(const QDBusMessage& answer)>;
    using Received = std::function<void(const QDBusMessage& message)>;

    // With an empty address there never is a bus. Nothing happens before `open`.
    explicit BusConnection(QString address);
    BusConnection(QString address, Timing timing);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection() override;

    // Connects now, or as soon as there is a bus. Once.
    void open();

    bool isConnected() const { return isConnected_; }
    // Good until `disconnected`.
    const QDBusConnection& connection() const { return connection_; }

    // `answered` is called once, unless `context` is gone by then. Without a bus, never. Qt may
    // deliver an answer behind signals that were sent after it.
    void call(const BusCall& call, QObject* context, Answered answered);
    // Until `context` is gone or the connection lost.
    void listen(const BusSignal& signal, QObject* context, Received received);

  signals:
    void connected();
    void disconnected();

  private:
    Q_SLOT void lose();
    void connectToBus();
    void leaveBus();

    QString address_;
    Timing timing_;
    QString name_;  // of the connection, within this process
    QDBusConnection connection_;
    bool isConnected_ = false;
    BusPauses pauses_;
    QElapsedTimer sinceConnected_;
    QTimer nextAttempt_;
};

}  // namespace brimwatch
