#include "platform/linux/status_notifier_item.h"

#include <utility>

namespace brimwatch {

namespace {

constexpr const char* interfaceName = "org.kde.StatusNotifierItem";

// Whether the next text differed.
bool replaceText(std::string& text, const QString& next) {
    std::string bytes = next.toStdString();
    if (text == bytes) return false;
    text = std::move(bytes);
    return true;
}

void append(sd_bus_message* message, const char* text) {
    sd_bus_message_append_basic(message, 's', text);
}

void appendPixmap(sd_bus_message* message, const NotifierPixmap& pixmap) {
    sd_bus_message_open_container(message, 'r', "iiay");
    sd_bus_message_append(message, "ii", pixmap.width, pixmap.height);
    sd_bus_message_append_array(message, 'y', pixmap.bytes.constData(),
                                static_cast<std::size_t>(pixmap.bytes.size()));
    sd_bus_message_close_container(message);
}

void ignore(sd_bus_message* call) {
    sd_bus_reply_method_return(call, "");
}

void readCategory(sd_bus_message* reply) {
    append(reply, "ApplicationStatus");
}

void readNoText(sd_bus_message* reply) {
    append(reply, "");
}

void readNoWindow(sd_bus_message* reply) {
    sd_bus_message_append(reply, "i", 0);
}

void readNoOrder(sd_bus_message* reply) {
    sd_bus_message_append(reply, "u", 0U);
}

void readNo(sd_bus_message* reply) {
    sd_bus_message_append(reply, "b", 0);
}

void readNoPixmaps(sd_bus_message* reply) {
    sd_bus_message_append(reply, "a(iiay)", 0);
}

}  // namespace

using Item = StatusNotifierItem;

const std::array<sd_bus_vtable, 33> StatusNotifierItem::table = {
    startOfTable(),
    propertyEntry<&readCategory>("Category", "s"),
    propertyEntry<&Item::readId>("Id", "s"),
    propertyEntry<&Item::readTitle>("Title", "s"),
    propertyEntry<&Item::readStatus>("Status", "s"),
    propertyEntry<&readNoWindow>("WindowId", "i"),
    propertyEntry<&readNoText>("IconThemePath", "s"),
    // A name would win over the pixmap.
    propertyEntry<&readNoText>("IconName", "s"),
    propertyEntry<&Item::readPixmaps>("IconPixmap", "a(iiay)"),
    propertyEntry<&Item::readTitle>("IconAccessibleDesc", "s"),
    propertyEntry<&readNoText>("OverlayIconName", "s"),
    propertyEntry<&readNoPixmaps>("OverlayIconPixmap", "a(iiay)"),
    propertyEntry<&readNoText>("AttentionIconName", "s"),
    propertyEntry<&readNoPixmaps>("AttentionIconPixmap", "a(iiay)"),
    propertyEntry<&readNoText>("AttentionMovieName", "s"),
    propertyEntry<&Item::readToolTip>("ToolTip", "(sa(iiay)ss)"),
    propertyEntry<&readNo>("ItemIsMenu", "b"),
    propertyEntry<&Item::readMenu>("Menu", "o"),
    propertyEntry<&Item::readLabel>("XAyatanaLabel", "s"),
    propertyEntry<&Item::readLabelGuide>("XAyatanaLabelGuide", "s"),
    propertyEntry<&readNoOrder>("XAyatanaOrderingIndex", "u"),
    methodEntry<&Item::activate>("Activate", "ii", "", SD_BUS_PARAM(x) SD_BUS_PARAM(y)),
    // Only panels that draw no menu ask for one. What a click opens has the same commands.
    methodEntry<&Item::activate>("ContextMenu", "ii", "", SD_BUS_PARAM(x) SD_BUS_PARAM(y)),
    methodEntry<&ignore>("SecondaryActivate", "ii", "", SD_BUS_PARAM(x) SD_BUS_PARAM(y)),
    methodEntry<&ignore>("XAyatanaSecondaryActivate", "u", "", SD_BUS_PARAM(timestamp)),
    methodEntry<&ignore>("Scroll", "is", "", SD_BUS_PARAM(delta) SD_BUS_PARAM(orientation)),
    methodEntry<&Item::keepToken>("ProvideXdgActivationToken", "s", "", SD_BUS_PARAM(token)),
    signalEntry("NewTitle", ""),
    signalEntry("NewIcon", ""),
    signalEntry("NewToolTip", ""),
    signalEntry("NewStatus", "s", SD_BUS_PARAM(status)),
    signalEntry("XAyatanaNewLabel", "ss", SD_BUS_PARAM(label) SD_BUS_PARAM(guide)),
    endOfTable(),
};

StatusNotifierItem::StatusNotifierItem(const QString& id, const char* menuPath)
    : id_(id.toStdString()), menuPath_(menuPath) {}

bool StatusNotifierItem::exportOn(EventLoopBus& bus) {
    bus_ = &bus;
    object_ = ExportedObject(bus, objectPath, interfaceName, table.data(), this);
    return bool(object_);
}

void StatusNotifierItem::setTitle(const QString& title) {
    if (!replaceText(title_, title)) return;
    send("NewTitle");
    send("NewToolTip");
}

void StatusNotifierItem::setLabel(const QString& label) {
    if (replaceText(label_, label)) send("XAyatanaNewLabel", {label_.c_str(), labelGuide()});
}

void StatusNotifierItem::setDescription(const QString& description) {
    if (replaceText(description_, description)) send("NewToolTip");
}

void StatusNotifierItem::setPicture(const QImage& picture) {
    writePixmap(picture, nextPixmap_);
    if (nextPixmap_ == pixmap_) return;
    std::swap(pixmap_, nextPixmap_);
    send("NewIcon");
}

void StatusNotifierItem::setStatus(Status status) {
    if (status_ == status) return;
    status_ = status;
    send("NewStatus", {statusName()});
}

// Who hears of it may destroy the item, so the reply goes first.
void StatusNotifierItem::activate(sd_bus_message* call) {
    int x = 0;
    int y = 0;
    sd_bus_message_read(call, "ii", &x, &y);
    sd_bus_reply_method_return(call, "");
    const QString token = std::exchange(activationToken_, QString());
    emit activated(QPoint(x, y), token);
}

void StatusNotifierItem::keepToken(sd_bus_message* call) {
    const char* token = "";
    sd_bus_message_read(call, "s", &token);
    activationToken_ = QString::fromUtf8(token);
    sd_bus_reply_method_return(call, "");
}

void StatusNotifierItem::readId(sd_bus_message* reply) const {
    append(reply, id_.c_str());
}

void StatusNotifierItem::readTitle(sd_bus_message* reply) const {
    append(reply, title_.c_str());
}

void StatusNotifierItem::readStatus(sd_bus_message* reply) const {
    append(reply, statusName());
}

void StatusNotifierItem::readPixmaps(sd_bus_message* reply) const {
    sd_bus_message_open_container(reply, 'a', "(iiay)");
    if (!pixmap_.bytes.isEmpty()) appendPixmap(reply, pixmap_);
    sd_bus_message_close_container(reply);
}

void StatusNotifierItem::readToolTip(sd_bus_message* reply) const {
    sd_bus_message_append(reply, "(sa(iiay)ss)", "", 0, title_.c_str(), description_.c_str());
}

void StatusNotifierItem::readMenu(sd_bus_message* reply) const {
    sd_bus_message_append(reply, "o", menuPath_);
}

void StatusNotifierItem::readLabel(sd_bus_message* reply) const {
    append(reply, label_.c_str());
}

void StatusNotifierItem::readLabelGuide(sd_bus_message* reply) const {
    append(reply, labelGuide());
}

const char* StatusNotifierItem::statusName() const {
    return status_ == Status::active ? "Active" : "Passive";
}

const char* StatusNotifierItem::labelGuide() const {
    return label_.empty() ? "" : "100%";
}

void StatusNotifierItem::send(const char* signal) const {
    send(signal, {});
}

void StatusNotifierItem::send(const char* signal, std::initializer_list<const char*> texts) const {
    if (!bus_) return;
    const BusMessage message = bus_->newSignal(objectPath, interfaceName, signal);
    if (!message) return;
    for (const char* text : texts)
        append(message.get(), text);
    bus_->send(message);
}

}  // namespace brimwatch
