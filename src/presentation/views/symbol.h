// A small sign beside a text, filled with one colour: `Symbol` in QML. Main thread.
#pragma once

#include <QColor>
#include <QQmlEngine>
#include <QQuickPaintedItem>
#include <QString>

namespace brimwatch {

class Symbol : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    // As in `symbolPath`; of any other name nothing is to be seen.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

  public:
    explicit Symbol(QQuickItem* parent = nullptr);

    QString name() const { return name_; }
    void setName(const QString& name);
    QColor color() const { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

  signals:
    void nameChanged();
    void colorChanged();

  private:
    QString name_;
    QColor color_ = Qt::black;
};

}  // namespace brimwatch
