// The item in a panel that finds its items on the session bus.
//
// Where the panel shows no text beside a picture, there is a second item, which holds only the
// number. It has a connection of its own, because closing that is the one way to take an item out
// of every panel. Main thread.
#pragma once

#include <QObject>
#include <QPoint>
#include <chrono>
#include <memory>
#include <optional>

#include "platform/linux/bus_link.h"
#include "platform/linux/notifier_entry.h"
#include "platform/linux/notifier_watcher.h"
#include "platform/linux/number_picture.h"
#include "platform/linux/panel_content.h"
#include "platform/linux/panel_traits.h"
#include "support/environment.h"

namespace brimwatch {

class NotifierPanel final : public QObject {
    Q_OBJECT

  public:
    // What the environment views and the content must outlive it.
    NotifierPanel(const Environment& environment, std::chrono::milliseconds busRetry,
                  const PanelContent& content);
    ~NotifierPanel() override;

    // Once.
    void show();
    // Absent, too, where there is no bus.
    NotifierWatcher::Presence presence() const;
    bool hasHost() const { return watcher_ && watcher_->hasHost(); }
    PanelTraits traits() const;

    // Show what has changed in the content.
    void updateNumber();
    void updatePicture();
    void updateRows();

  signals:
    void activated(QPoint position, const QString& activationToken);
    void menuOpened();
    void commandChosen(int id);
    // Of presence, host or traits.
    void changed();

  private:
    struct NumberItem;

    void meetBus();
    void leaveBus();
    void meetWatcher();
    void noteHosts();
    void arrangeNumberItem();
    void addNumberItem();
    void listenTo(const NotifierEntry& entry);

    const QString desktops_;
    const PanelContent& content_;
    NotifierEntry ring_;
    PictureWithNumber wide_;
    BusLink bus_;
    std::optional<NotifierWatcher> watcher_;
    std::unique_ptr<NumberItem> numberItem_;
};

}  // namespace brimwatch
