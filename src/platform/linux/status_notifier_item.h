// An item of the panel, as panels find it on the bus: org.kde.StatusNotifierItem.
//
// Panels read it when one of its signals tells them to, and there is a signal only when what it
// tells of has changed. It has one picture in one size: panels scale it, and each further size
// would cost them, and us, a copy more with every frame. Main thread.
#pragma once

#include <QImage>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <array>
#include <initializer_list>
#include <string>

#include "platform/linux/event_loop_bus.h"
#include "platform/linux/exported_object.h"
#include "platform/linux/notifier_pixmap.h"

namespace brimwatch {

class StatusNotifierItem final : public QObject {
    Q_OBJECT

  public:
    // Some panels keep the place of a passive item, and show nothing there.
    enum class Status { active, passive };

    // Where watchers look for it if they are told nothing else.
    static constexpr const char* objectPath = "/StatusNotifierItem";

    // The id is the same in every run and no other item's. The menu lies on the same connection.
    StatusNotifierItem(const QString& id, const char* menuPath);

    // False where the connection is closed. What it was exported on before it has left.
    bool exportOn(EventLoopBus& bus);

    // What it is called, in lists and to who can't see it.
    void setTitle(const QString& title);
    // The text beside the picture, which only some panels show.
    void setLabel(const QString& label);
    // The lines below the title in the tooltip.
    void setDescription(const QString& description);
    void setPicture(const QImage& picture);
    void setStatus(Status status);

  signals:
    // With the place that the panel gave, whatever it means there.
    void activated(QPoint position, const QString& activationToken);

  private:
    static const std::array<sd_bus_vtable, 33> table;

    void activate(sd_bus_message* call);
    void keepToken(sd_bus_message* call);

    void readId(sd_bus_message* reply) const;
    void readTitle(sd_bus_message* reply) const;
    void readStatus(sd_bus_message* reply) const;
    void readPixmaps(sd_bus_message* reply) const;
    void readToolTip(sd_bus_message* reply) const;
    void readMenu(sd_bus_message* reply) const;
    void readLabel(sd_bus_message* reply) const;
    void readLabelGuide(sd_bus_message* reply) const;

    const char* statusName() const;
    const char* labelGuide() const;
    void send(const char* signal) const;
    void send(const char* signal, std::initializer_list<const char*> texts) const;

    std::string id_;
    const char* menuPath_;
    std::string title_;
    std::string label_;
    std::string description_;
    NotifierPixmap pixmap_;
    NotifierPixmap nextPixmap_;
    Status status_ = Status::active;
    QString activationToken_;
    QPointer<EventLoopBus> bus_;
    ExportedObject object_;
};

}  // namespace brimwatch
