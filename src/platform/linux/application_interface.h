// The interface by which a desktop and second starts reach a running program:
// `org.freedesktop.Application` of the Desktop Entry Specification.
//
// The program has neither documents nor actions: whatever is called asks it to show itself. Main
// thread.
#pragma once

#include <QDBusAbstractAdaptor>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace brimwatch {

class ApplicationInterface final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    // For the object that is exported.
    explicit ApplicationInterface(QObject* exported);

  signals:
    // With what lets a window come to the front, or empty.
    void called(const QString& token);

  public slots:
    // The names are those of the methods on the bus.
    // NOLINTBEGIN(readability-identifier-naming)
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& addresses, const QVariantMap& platformData);
    void ActivateAction(const QString& action, const QVariantList& parameter,
                        const QVariantMap& platformData);
    // NOLINTEND(readability-identifier-naming)
};

}  // namespace brimwatch
