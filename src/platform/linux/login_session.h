// What logind, or elogind, tells of the session that this process belongs to.
//
// Without it, and while it is gone, the session is active and unlocked, and nothing sleeps. Main
// thread.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <cstdint>
#include <optional>

#include "platform/linux/bus_service.h"
#include "support/environment.h"

namespace brimwatch {

class LoginSession final : public QObject {
    Q_OBJECT

  public:
    struct State {
        bool isActive = true;
        bool isLocked = false;
        bool isAboutToSleep = false;

        bool operator==(const State&) const = default;
    };
    // How the session is found, the first that gives one: by its id, by the process, by the user.
    struct Process {
        QString sessionId;  // or empty
        std::uint32_t id = 0;
        std::uint32_t user = 0;
    };

    static Process thisProcess(const Environment& environment);

    LoginSession(BusConnection& systemBus, Process process);

    const State& state() const { return state_; }

  signals:
    void changed();

  private:
    void start();
    void findById();
    void findByProcess();
    void findByUser();
    void askUser(const QString& user);
    void follow(const QString& session);
    void callManager(const QString& method, const QVariant& argument,
                     BusConnection::Answered answered);
    void take(const QVariantMap& properties);
    void set(const State& state);

    Process process_;
    BusService logind_;
    State state_;
};

}  // namespace brimwatch
