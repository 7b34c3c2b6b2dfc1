// logind, or elogind, as a test wants it.
#pragma once

#include <QDBusObjectPath>
#include <QVariantMap>
#include <map>

#include "platform/linux/fake_service.h"

namespace brimwatch::test {

class FakeLogind : public FakeService {
  public:
    explicit FakeLogind(const QString& address);

    void come() { own(QStringLiteral("org.freedesktop.login1")); }
    void go() { release(QStringLiteral("org.freedesktop.login1")); }

    // Answers of the manager, by method; what has none fails.
    std::map<QString, QVariant> answers;
    QVariant display;     // of the user
    QVariant properties;  // of the session
    QStringList silent;   // methods that are never answered

    // The session that all methods but these fail to give.
    void giveSession(const QString& method);
    void giveDisplay(const QString& id, const QString& path);

    void sleepIs(const QVariantList& arguments);
    void changeSession(const QVariantMap& changed, const QStringList& invalid = {});

    static QString sessionPath() { return QStringLiteral("/org/freedesktop/login1/session/_37"); }

  private:
    QDBusMessage answer(const QDBusMessage& call) const;
};

}  // namespace brimwatch::test
