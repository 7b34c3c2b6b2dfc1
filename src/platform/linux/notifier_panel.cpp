#include "platform/linux/notifier_panel.h"

#include <QLoggingCategory>

namespace brimwatch {

namespace {

Q_LOGGING_CATEGORY(panelLog, "net.quillmoor.brimwatch.panel")

const char* const itemId = "net.quillmoor.brimwatch";
const char* const numberItemId = "net.quillmoor.brimwatch.number";

QString valueOf(const Environment& environment, std::string_view name) {
    const auto value = environment.value(name).value_or("");
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

}  // namespace

struct NotifierPanel::NumberItem {
    explicit NumberItem(const QString& address) : connection(address), entry(numberItemId) {}

    BusConnection connection;
    NotifierEntry entry;
};

NotifierPanel::NotifierPanel(const Environment& environment, std::chrono::milliseconds busRetry,
                             const PanelContent& content)
    : desktops_(valueOf(environment, "XDG_CURRENT_DESKTOP")),
      content_(content),
      ring_(itemId),
      bus_(environment, busRetry) {
    listenTo(ring_);
    connect(&bus_, &BusLink::opened, this, &NotifierPanel::meetBus);
    connect(&bus_, &BusLink::missing, this, &NotifierPanel::leaveBus);
}

NotifierPanel::~NotifierPanel() = default;

void NotifierPanel::show() {
    bus_.open();
}

NotifierWatcher::Presence NotifierPanel::presence() const {
    return watcher_ ? watcher_->presence() : NotifierWatcher::Presence::absent;
}

PanelTraits NotifierPanel::traits() const {
    return panelTraits(desktops_,
                       watcher_ ? watcher_->hosts().value_or(QStringList()) : QStringList());
}

void NotifierPanel::meetBus() {
    if (!ring_.exportOn(*bus_.connection())) return;
    watcher_.emplace(*bus_.connection());
    connect(&*watcher_, &NotifierWatcher::appeared, this, &NotifierPanel::meetWatcher);
    connect(&*watcher_, &NotifierWatcher::vanished, this, &NotifierPanel::noteHosts);
    connect(&*watcher_, &NotifierWatcher::hostsChanged, this, &NotifierPanel::noteHosts);
}

void NotifierPanel::leaveBus() {
    qCWarning(panelLog, "No session bus answers. Panels that need one can't show the program.");
    numberItem_.reset();
    watcher_.reset();
    emit changed();
}

void NotifierPanel::meetWatcher() {
    watcher_->registerItem(*bus_.connection());
    // The number comes again behind the ring.
    numberItem_.reset();
    noteHosts();
}

void NotifierPanel::noteHosts() {
    emit changed();
    updateNumber();
}

void NotifierPanel::updateNumber() {
    ring_.item.setTitle(content_.title());
    ring_.item.setLabel(content_.number);
    updatePicture();
    arrangeNumberItem();
}

void NotifierPanel::updatePicture() {
    const bool isWide = traits().numberPlace == PanelTraits::NumberPlace::insidePicture;
    if (isWide && !content_.number.isEmpty()) {
        ring_.item.setPicture(wide_.joined(content_.picture, content_.number, content_.look));
    } else if (content_.picture.isNull()) {
        ring_.item.setPicture(emptySquare(content_.look));
    } else {
        ring_.item.setPicture(content_.picture);
    }
}

void NotifierPanel::updateRows() {
    ring_.setRows(content_);
    if (numberItem_) numberItem_->entry.setRows(content_);
}

void NotifierPanel::arrangeNumberItem() {
    const bool isWanted = presence() == NotifierWatcher::Presence::present && watcher_->hosts() &&
                          traits().numberPlace == PanelTraits::NumberPlace::ownItem &&
                          !content_.number.isEmpty();
    if (!isWanted) return numberItem_.reset();
    const bool isNew = !numberItem_;
    if (isNew) numberItem_ = std::make_unique<NumberItem>(bus_.address());
    NotifierEntry& entry = numberItem_->entry;
    entry.item.setTitle(content_.title());
    entry.item.setPicture(numberSquare(content_.number, content_.look));
    if (isNew) addNumberItem();
}

void NotifierPanel::addNumberItem() {
    NotifierEntry& entry = numberItem_->entry;
    entry.setRows(content_);
    listenTo(entry);
    if (entry.exportOn(*numberItem_->connection)) watcher_->registerItem(*numberItem_->connection);
}

void NotifierPanel::listenTo(const NotifierEntry& entry) {
    connect(&entry.item, &StatusNotifierItem::activated, this, &NotifierPanel::activated);
    connect(&entry.menu, &DBusMenu::opened, this, &NotifierPanel::menuOpened);
    connect(&entry.menu, &DBusMenu::commandChosen, this, &NotifierPanel::commandChosen);
}

}  // namespace brimwatch
