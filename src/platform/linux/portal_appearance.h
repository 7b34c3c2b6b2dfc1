// The look that the user chose, as the settings portal of a Linux desktop tells it.
//
// What the portal does not tell comes from elsewhere: whether it is dark from the palette of the
// application, if that has one (so the palette must stay the desktop's), and whether things move
// from Plasma's file of settings, as it stood at the start. The portal is started once for each
// connection to the bus, as every toolkit does, and its values come later, by signals; what it told
// last stays while it is gone. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "platform/desktop_appearance.h"
#include "platform/linux/bus_service.h"
#include "support/file_system.h"

namespace brimwatch {

class PortalAppearance final : public DesktopAppearance {
    Q_OBJECT

  public:
    // The connection must outlive this; it may be opened before or after. The file system is only
    // used here.
    PortalAppearance(BusConnection& sessionBus, FileSystem& files,
                     const std::optional<std::string>& configFolder);

    bool isDark() const override { return isDark_; }
    bool reducesMotion() const override { return reducesMotion_; }
    bool increasesContrast() const override { return increasesContrast_; }
    double textScale() const override { return textScale_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void startPortal();
    void read();
    void hear(const QDBusMessage& message);
    void readSetting(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);
    void update();

    bool findDark() const;
    bool findReducedMotion() const;

    BusConnection& bus_;
    BusService portal_;
    bool kdeStopsMotion_;
    std::set<std::pair<QString, QString>> unread_;  // asked for, and not told since
    // Nothing where the portal does not tell.
    std::optional<std::uint32_t> colorScheme_;
    std::optional<std::uint32_t> reducedMotion_;
    std::optional<std::uint32_t> contrast_;
    std::optional<bool> animations_;
    std::optional<double> textScalingFactor_;

    bool isDark_ = false;
    bool reducesMotion_ = false;
    bool increasesContrast_ = false;
    double textScale_ = 1;
};

}  // namespace brimwatch
