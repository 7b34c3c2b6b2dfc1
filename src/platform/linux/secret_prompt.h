// Waits until the user has answered a prompt of a secret service's. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QObject>
#include <QString>
#include <chrono>

#include "platform/key_store.h"

namespace brimwatch {

class SecretPrompt final : public QObject {
    Q_OBJECT

  public:
    SecretPrompt(QDBusConnection bus, QString path);
    SecretPrompt(const SecretPrompt&) = delete;
    SecretPrompt& operator=(const SecretPrompt&) = delete;
    ~SecretPrompt() override;

    // Shows it and runs the event loop, without clicks and keys, until it is answered:
    // `userCanceled` if it was dismissed or nobody answered in time, `notAvailable` if the service
    // ended.
    KeyStatus show(std::chrono::milliseconds timeOut);

  private:
    Q_SLOT void complete(const QDBusMessage& signal);
    void end(KeyStatus status);

    QDBusConnection bus_;
    QString path_;
    QDBusServiceWatcher service_;
    QEventLoop loop_;
    bool isOver_ = false;
    KeyStatus status_ = key_status::userCanceled;
};

}  // namespace brimwatch
