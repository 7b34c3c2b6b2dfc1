// A row that can be moved among others: `MovableRow` in QML, which decides what it looks like.
//
// To an accessibility client it is a list item with two actions of its own, by the names that it is
// given: Qt Quick has only a fixed set of actions to offer. It needs an `Accessible.role` to be
// there for such a client at all. Main thread.
#pragma once

#include <QQmlEngine>
#include <QQuickItem>
#include <QString>

namespace brimwatch {

class MovableRow : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER name_ NOTIFY nameChanged)
    Q_PROPERTY(QString moveUpText MEMBER moveUpText_ NOTIFY moveUpTextChanged)
    Q_PROPERTY(QString moveDownText MEMBER moveDownText_ NOTIFY moveDownTextChanged)

  public:
    explicit MovableRow(QQuickItem* parent = nullptr);

    const QString& name() const { return name_; }
    const QString& moveUpText() const { return moveUpText_; }
    const QString& moveDownText() const { return moveDownText_; }

  signals:
    void nameChanged();
    void moveUpTextChanged();
    void moveDownTextChanged();
    void moveUpRequested();
    void moveDownRequested();

  private:
    QString name_;
    QString moveUpText_;
    QString moveDownText_;
};

}  // namespace brimwatch
