// A filled capsule, or a circle where it is as wide as high: `Capsule` in QML. Main thread.
//
// The software renderer of Qt Quick rounds the corners of a `Rectangle` to whole pixels, which is
// too coarse for small shapes.
#pragma once

#include <QColor>
#include <QQmlEngine>
#include <QQuickPaintedItem>

namespace brimwatch {

class Capsule : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

  public:
    explicit Capsule(QQuickItem* parent = nullptr);

    QColor color() const { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

  signals:
    void colorChanged();

  private:
    QColor color_ = Qt::black;
};

}  // namespace brimwatch
