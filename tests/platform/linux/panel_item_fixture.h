// The item of a program, on a bus and in a panel of the test's own.
#pragma once

#include <QImage>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "harness/environment_list.h"
#include "platform/linux/notifier_types.h"
#include "platform/linux/panel_fixture.h"
#include "platform/linux/panel_item.h"

namespace brimwatch::test {

inline const QString ringId = QStringLiteral("net.quillmoor.brimwatch");
inline const QString numberId = QStringLiteral("net.quillmoor.brimwatch.number");

class PanelItemTest : public PanelTest {
  protected:
    void makeItem(const std::string& desktop = "LXQt") {
        environment_.set("DBUS_SESSION_BUS_ADDRESS", busAddress().toStdString());
        environment_.set("XDG_CURRENT_DESKTOP", desktop);
        using std::chrono::milliseconds;
        const PanelItem::Delays quick = {
            .notifiers = {.busRetry = milliseconds(20), .acquaintance = milliseconds(50)},
            .oldTray = milliseconds(1)};
        item_ = std::make_unique<PanelItem>(environment_.view(), appearance_, quick);
        QObject::connect(item_.get(), &StatusItem::activated, item_.get(),
                         [this](std::optional<QPoint> position, const QString& token) {
                             clicks_.emplace_back(position, token);
                         });
        QObject::connect(item_.get(), &StatusItem::commandChosen, item_.get(),
                         [this](int id) { chosen_.push_back(id); });
        QObject::connect(item_.get(), &StatusItem::menuOpened, item_.get(),
                         [this] { ++openings_; });
        QObject::connect(item_.get(), &StatusItem::lookChanged, item_.get(), [this] { ++looks_; });
        QObject::connect(item_.get(), &StatusItem::visibilityChanged, item_.get(),
                         [this] { visible_.push_back(item_->isVisible()); });
    }
    void showItem(const std::string& desktop = "LXQt") {
        makeItem(desktop);
        item_->show();
    }

    bool hasItems(int count) {
        return eventuallyInLoop([&] { return panel_->items().size() >= count; });
    }
    bool becomesVisible(bool isVisible) {
        return eventuallyInLoop([&] { return item_->isVisible() == isVisible; });
    }
    // Waits until everything that was asked and sent before has been dealt with.
    void settle() {
        for (int i = 0; i < 3; ++i) {
            panel_->call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         "GetId");
            for (const QString& item : panel_->items())
                panel_->idOf(item);
        }
    }
    QString ring() { return panel_->itemWithId(ringId); }
    QString number() { return panel_->itemWithId(numberId); }
    NotifierPixmap pixmapOf(const QString& item) {
        const auto pixmaps = qdbus_cast<NotifierPixmaps>(panel_->property(item, "IconPixmap"));
        EXPECT_EQ(pixmaps.size(), 1);
        return pixmaps.isEmpty() ? NotifierPixmap() : pixmaps[0];
    }
    static QImage square(const QColor& color) {
        QImage picture(22, 22, QImage::Format_ARGB32_Premultiplied);
        picture.fill(color);
        return picture;
    }

    EnvironmentList environment_ = {};
    ChosenAppearance appearance_;
    std::unique_ptr<PanelItem> item_;
    std::vector<std::pair<std::optional<QPoint>, QString>> clicks_;
    std::vector<int> chosen_;
    std::vector<bool> visible_;
    int openings_ = 0;
    int looks_ = 0;
};

}  // namespace brimwatch::test
