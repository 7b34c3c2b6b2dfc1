// The program's item in whatever panel the desktop has.
//
// Most panels find it on the session bus; where none does so, and there is a tray of the old kind
// on the X11 display, it stands there until such a panel comes. Panels and buses may come late, die
// and return, at any time and in any order: the item is there whenever one is. Main thread, with a
// QApplication.
#pragma once

#include <QTimer>
#include <chrono>
#include <optional>

#include "platform/desktop_appearance.h"
#include "platform/linux/notifier_panel.h"
#include "platform/linux/panel_content.h"
#include "platform/linux/xembed_panel.h"
#include "platform/linux/xembed_tray.h"
#include "platform/status_item.h"
#include "support/environment.h"

namespace brimwatch {

class PanelItem final : public StatusItem {
    Q_OBJECT

  public:
    struct Delays {
        NotifierPanel::Delays notifiers = {.busRetry = std::chrono::seconds(10),
                                           .acquaintance = std::chrono::seconds(2)};
        // A panel that starts may be a tray of the old kind a moment before it is one on the bus.
        std::chrono::milliseconds oldTray = std::chrono::seconds(1);
    };

    // What is given must outlive it.
    PanelItem(const Environment& environment, const DesktopAppearance& appearance);
    PanelItem(const Environment& environment, const DesktopAppearance& appearance, Delays delays);

    void show() override;
    bool isVisible() const override { return isVisible_; }
    Look look() const override { return content_.look; }
    void setTitle(const QString& title) override;
    void setPicture(const QImage& picture) override;
    void setMenu(const std::vector<MenuRow>& rows) override;

  private:
    void watchScreens();
    void noteChange();
    void choosePanel();
    bool isOldTrayWanted() const;
    void updateVisibility();
    void updateLook();
    Look currentLook() const;
    void announceClick(QPoint position, const QString& activationToken);

    const DesktopAppearance& appearance_;
    const bool placesHaveMeaning_;
    PanelContent content_;
    NotifierPanel notifiers_;
    XembedTray oldTray_;
    QTimer oldTrayDelay_;
    std::optional<XembedPanel> oldTrayPanel_;
    bool isShown_ = false;
    bool isVisible_ = false;
};

}  // namespace brimwatch
