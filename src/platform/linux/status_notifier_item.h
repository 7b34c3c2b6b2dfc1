// An item of the panel, as panels find it on the bus: org.kde.StatusNotifierItem.
//
// Panels read it when one of its signals tells them to, and there is a signal only when what it
// tells of has changed. It has one picture in one size: panels scale it, and each further size
// would cost them, and us, a copy more with every frame. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QImage>
#include <QPoint>
#include <QString>
#include <array>
#include <optional>

#include "platform/linux/notifier_pixmap.h"

namespace brimwatch {

class StatusNotifierItem final : public QDBusVirtualObject {
    Q_OBJECT

  public:
    // Some panels keep the place of a passive item, and show nothing there.
    enum class Status { active, passive };

    // Where watchers look for it if they are told nothing else.
    static QString objectPath() { return QStringLiteral("/StatusNotifierItem"); }

    // The id is the same in every run and no other item's. The menu lies on the same connection.
    StatusNotifierItem(QString id, QString menuPath);

    // False where the connection is broken. What it was exported on before it has left.
    bool exportOn(const QDBusConnection& connection);

    // What it is called, in lists and to who can't see it.
    void setTitle(const QString& title);
    // The text beside the picture, which only some panels show.
    void setLabel(const QString& label);
    // The lines below the title in the tooltip.
    void setDescription(const QString& description);
    void setPicture(const QImage& picture);
    void setStatus(Status status);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  signals:
    // With the place that the panel gave, whatever it means there.
    void activated(QPoint position, const QString& activationToken);

  private:
    struct Method {
        const char* name;
        const char* signature;
        void (StatusNotifierItem::*run)(const QVariantList& arguments);
    };
    static const std::array<Method, 6> methods;

    void activate(const QVariantList& arguments);
    void keepToken(const QVariantList& arguments);
    void ignore(const QVariantList& /*arguments*/) {}

    QVariantMap properties() const;
    QString labelGuide() const;
    void send(const char* signal, const QVariantList& arguments = {}) const;

    const QString id_;
    const QString menuPath_;
    std::optional<QDBusConnection> connection_;
    QString title_;
    QString label_;
    QString description_;
    Status status_ = Status::active;
    NotifierPixmap pixmap_;
    NotifierPixmap nextPixmap_;
    QString activationToken_;
};

}  // namespace brimwatch
