// The number as a picture, for panels that show no text beside a picture.
//
// Sizes are those of the look: a square has twenty points. Needs a QGuiApplication.
#pragma once

#include <QImage>
#include <QString>

#include "platform/status_item.h"

namespace brimwatch {

// The length of a square's side in pixels.
int squareSide(const StatusItem::Look& look);
QImage emptySquare(const StatusItem::Look& look);

// The number without its sign, as large as fits into a square.
QImage numberSquare(const QString& number, const StatusItem::Look& look);

// A picture with the number on its right. Of the number and the look only the first one of a row is
// drawn: what moves costs no more than its pixels.
class PictureWithNumber {
  public:
    // Valid until the next call.
    const QImage& joined(const QImage& square, const QString& number, const StatusItem::Look& look);

  private:
    void drawNumber();

    QString number_;
    StatusItem::Look look_;
    QSize squareSize_;
    QImage joined_;
};

}  // namespace brimwatch
