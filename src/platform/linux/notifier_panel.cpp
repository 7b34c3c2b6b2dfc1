#include "platform/linux/notifier_panel.h"

#include <QLoggingCategory>

namespace brimwatch {

namespace {

using Presence = NotifierWatcher::Presence;

Q_LOGGING_CATEGORY(panelLog, "net.quillmoor.brimwatch.panel")

const char* const ringId = "net.quillmoor.brimwatch";
const char* const numberId = "net.quillmoor.brimwatch.number";

QString valueOf(const Environment& environment, std::string_view name) {
    const auto value = environment.value(name).value_or("");
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

}  // namespace

NotifierPanel::NotifierPanel(const Environment& environment, Delays delays,
                             const PanelContent& content)
    : desktops_(valueOf(environment, "XDG_CURRENT_DESKTOP")),
      content_(content),
      bus_(environment, delays.busRetry) {
    acquaintance_.setSingleShot(true);
    acquaintance_.setInterval(delays.acquaintance);
    connect(&acquaintance_, &QTimer::timeout, this, &NotifierPanel::updateNumber);
    connect(&bus_, &BusLink::opened, this, &NotifierPanel::meetBus);
    connect(&bus_, &BusLink::missing, this, &NotifierPanel::leaveBus);
}

void NotifierPanel::show() {
    bus_.open();
}

Presence NotifierPanel::presence() const {
    return watcher_ ? watcher_->presence() : Presence::absent;
}

PanelTraits NotifierPanel::traits() const {
    const QStringList noHosts;
    PanelTraits traits =
        panelTraits(desktops_, watcher_ ? watcher_->hosts().value_or(noHosts) : noHosts);
    if (xfceShade_ && xfceShade_->isDark()) traits.shade = PanelTraits::Shade::dark;
    return traits;
}

void NotifierPanel::meetBus() {
    watcher_.emplace(*bus_.connection());
    connect(&*watcher_, &NotifierWatcher::appeared, this, &NotifierPanel::meetWatcher);
    connect(&*watcher_, &NotifierWatcher::vanished, this, &NotifierPanel::meetWatcher);
    connect(&*watcher_, &NotifierWatcher::hostsChanged, this, &NotifierPanel::noteHosts);
    if (!isXfce(desktops_)) return;
    xfceShade_.emplace(*bus_.connection());
    connect(&*xfceShade_, &XfcePanelShade::changed, this, &NotifierPanel::changed);
}

void NotifierPanel::leaveBus() {
    qCWarning(panelLog, "No session bus answers. Panels that need one can't show the program.");
    ring_.reset();
    number_.reset();
    xfceShade_.reset();
    watcher_.reset();
    emit changed();
}

// Another one knows nothing of what the former was told.
void NotifierPanel::meetWatcher() {
    ring_.reset();
    number_.reset();
    acquaintance_.start();
    noteHosts();
}

void NotifierPanel::noteHosts() {
    emit changed();
    updateNumber();
}

void NotifierPanel::updatePicture() {
    if (!ring_) return;
    const bool isWide = traits().numberPlace == PanelTraits::NumberPlace::insidePicture;
    if (isWide && !content_.number.isEmpty()) {
        ring_->item.setPicture(wide_.joined(content_.picture, content_.number, content_.look));
    } else if (content_.picture.isNull()) {
        ring_->item.setPicture(emptySquare(content_.look));
    } else {
        ring_->item.setPicture(content_.picture);
    }
}

void NotifierPanel::updateRows() {
    if (ring_) ring_->setRows(content_);
    if (number_) number_->setRows(content_);
}

void NotifierPanel::updateNumber() {
    if (presence() != Presence::present || !watcher_->hosts()) return;
    if (!ring_) ring_ = newEntry(ringId);
    ring_->item.setTitle(content_.title());
    ring_->item.setLabel(content_.number);
    updatePicture();
    updateNumberItem();
    registerEntries();
}

void NotifierPanel::updateNumberItem() {
    if (!isNumberItemWanted()) return number_.reset();
    if (!number_) number_ = newEntry(numberId);
    number_->item.setTitle(content_.title());
    number_->item.setPicture(numberSquare(content_.number, content_.look));
    const bool isSeen = !content_.number.isEmpty() || acquaintance_.isActive();
    number_->item.setStatus(isSeen ? StatusNotifierItem::Status::active
                                   : StatusNotifierItem::Status::passive);
}

bool NotifierPanel::isNumberFirst() const {
    return traits().newItem == PanelTraits::NewItem::onTheLeft;
}

// Xfce remembers for ever in which order it first showed two items, and shows no passive ones: so
// the number is shown before the ring, for a moment even while there is none. Others would show
// passive items, too.
bool NotifierPanel::isNumberItemWanted() const {
    const PanelTraits panel = traits();
    return panel.numberPlace == PanelTraits::NumberPlace::ownItem &&
           (isNumberFirst() || !content_.number.isEmpty());
}

std::unique_ptr<NotifierEntry> NotifierPanel::newEntry(const char* id) {
    auto entry = std::make_unique<NotifierEntry>(bus_.address(), id);
    entry->setRows(content_);
    connect(&entry->connection, &EventLoopBus::opened, this, &NotifierPanel::registerEntries);
    connect(&entry->item, &StatusNotifierItem::activated, this, &NotifierPanel::activated);
    connect(&entry->menu, &DBusMenu::opened, this, &NotifierPanel::menuOpened);
    connect(&entry->menu, &DBusMenu::commandChosen, this, &NotifierPanel::commandChosen);
    return entry;
}

// Panels show items in the order in which they learn of them, so the second waits for the first.
void NotifierPanel::registerEntries() {
    NotifierEntry* const first = isNumberFirst() ? number_.get() : ring_.get();
    NotifierEntry* const second = isNumberFirst() ? ring_.get() : number_.get();
    if (first != nullptr && !registerEntry(*first)) return;
    if (second != nullptr) registerEntry(*second);
}

bool NotifierPanel::registerEntry(NotifierEntry& entry) const {
    if (entry.isRegistered) return true;
    if (!entry.connection.isOpen()) return false;
    watcher_->registerItem(entry.connection.name());
    entry.isRegistered = true;
    return true;
}

}  // namespace brimwatch
