// The item in a panel that finds its items on the session bus.
//
// Where the panel shows no text beside a picture, there is a second item on the right of the first,
// which holds only the number. The items are there while a keeper of items is. Main thread.
#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>

#include "platform/linux/bus_link.h"
#include "platform/linux/notifier_entry.h"
#include "platform/linux/notifier_watcher.h"
#include "platform/linux/number_picture.h"
#include "platform/linux/panel_content.h"
#include "platform/linux/panel_traits.h"
#include "platform/linux/xfce_panel_shade.h"
#include "support/environment.h"

namespace brimwatch {

class NotifierPanel final : public QObject {
    Q_OBJECT

  public:
    struct Delays {
        std::chrono::milliseconds busRetry;      // between two looks for a bus
        std::chrono::milliseconds acquaintance;  // how long a panel needs to meet a new item
    };

    // The content, and what the environment is a view of, must outlive it.
    NotifierPanel(const Environment& environment, Delays delays, const PanelContent& content);

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
    void meetBus();
    void leaveBus();
    void meetWatcher();
    void noteHosts();
    void updateNumberItem();
    bool isNumberItemWanted() const;
    bool isNumberFirst() const;
    std::unique_ptr<NotifierEntry> newEntry(const char* id);
    void registerEntries();
    bool registerEntry(NotifierEntry& entry) const;

    const QString desktops_;
    const PanelContent& content_;
    PictureWithNumber wide_;
    BusLink bus_;
    QTimer acquaintance_;
    std::optional<NotifierWatcher> watcher_;
    std::optional<XfcePanelShade> xfceShade_;
    std::unique_ptr<NotifierEntry> ring_;
    std::unique_ptr<NotifierEntry> number_;
};

}  // namespace brimwatch
