// Whether the panel of Xfce is dark though the desktop is not, by its setting for that.
//
// False until the settings have answered, and where they don't. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace brimwatch {

class XfcePanelShade final : public QObject {
    Q_OBJECT

  public:
    explicit XfcePanelShade(QDBusConnection connection);

    bool isDark() const { return isDark_; }

  signals:
    void changed();

  private:
    Q_SLOT void noteSetting(const QDBusVariant& value);
    Q_SLOT void noteChange(const QString& channel, const QString& name, const QDBusVariant& value);
    Q_SLOT void ignoreError() {}

    bool isDark_ = false;
};

}  // namespace brimwatch
