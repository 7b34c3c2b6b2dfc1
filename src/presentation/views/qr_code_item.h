// The QR code of a text: `QrCode` in QML. Nothing where there is none. Main thread.
//
// White lies behind the code with a margin of three modules on every side, which together with the
// border of the picture is what readers need.
#pragma once

#include <QImage>
#include <QQmlEngine>
#include <QQuickPaintedItem>
#include <QString>

namespace brimwatch {

class QrCodeItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(QrCode)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)

  public:
    explicit QrCodeItem(QQuickItem* parent = nullptr);

    const QString& text() const { return text_; }
    void setText(const QString& text);

    void paint(QPainter* painter) override;

  signals:
    void textChanged();

  private:
    QString text_;
    QImage code_;
};

}  // namespace brimwatch
