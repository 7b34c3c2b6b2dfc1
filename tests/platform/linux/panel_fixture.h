// A session bus of the test's own, and a panel on it that a test can look through and kill.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "platform/desktop_appearance.h"

namespace brimwatch::test {

// Lets the event loop run until then, for ten seconds at most.
bool eventuallyInLoop(const std::function<bool()>& condition);

// A connection that is closed with its test.
class OwnConnection {
  public:
    explicit OwnConnection(const QString& address);
    OwnConnection(const OwnConnection&) = delete;
    OwnConnection& operator=(const OwnConnection&) = delete;
    ~OwnConnection();

    QDBusConnection* operator->() { return &connection_; }
    QDBusConnection& operator*() { return connection_; }

  private:
    QDBusConnection connection_;
};

// The signals that objects of others send.
class SignalLog : public QObject {
    Q_OBJECT

  public:
    SignalLog(QDBusConnection& connection, const QString& service);

    int count(const QString& name) const;
    QVariantList last(const QString& name) const;
    void clear() { messages_.clear(); }

  private slots:
    void note(const QDBusMessage& message) { messages_.push_back(message); }

  private:
    std::vector<QDBusMessage> messages_;
};

// A keeper of items which shows them itself.
class FakePanel : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

  public:
    explicit FakePanel(const QString& address);

    bool hasHost() const { return hasHost_; }
    void setHasHost(bool hasHost);
    // What items have been registered as, in their order.
    const QStringList& items() const { return items_; }
    // The id that an item tells, or nothing if it is gone.
    QString idOf(const QString& item);
    QString itemWithId(const QString& id);

    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {});
    QVariant property(const QString& service, const QString& name);
    // Of the menu of the item.
    QDBusMessage callMenu(const QString& service, const QString& method,
                          const QVariantList& arguments = {});
    QDBusMessage callItem(const QString& service, const QString& method,
                          const QVariantList& arguments = {});
    QDBusConnection& connection() { return *connection_; }

  public slots:
    void RegisterStatusNotifierItem(const QString& service);

  signals:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

  private:
    OwnConnection connection_;
    bool hasHost_ = true;
    QStringList items_;
};

class ChosenAppearance : public DesktopAppearance {
  public:
    bool isDark() const override { return isDark_; }
    bool reducesMotion() const override { return false; }
    bool increasesContrast() const override { return false; }
    double textScale() const override { return 1; }
    void choose(bool isDark) {
        isDark_ = isDark;
        emit darkChanged();
    }

  private:
    bool isDark_ = false;
};

class PanelTest : public ::testing::Test {
  protected:
    void SetUp() override;

    void startBus();
    void killBus();
    QString busAddress() const;
    void startPanel() { panel_ = std::make_unique<FakePanel>(busAddress()); }

    TemporaryFolder folder_;
    std::unique_ptr<QApplication> application_;
    std::optional<Process> bus_;
    std::unique_ptr<FakePanel> panel_;

  private:
    int argumentCount_ = 1;
    std::string name_ = "panel_test";
    char* arguments_[2] = {name_.data(), nullptr};
};

}  // namespace brimwatch::test
