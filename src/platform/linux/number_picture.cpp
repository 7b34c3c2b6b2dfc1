#include "platform/linux/number_picture.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace brimwatch {

namespace {

using Look = StatusItem::Look;

constexpr double sidePoints = 20;
constexpr double gapPoints = 3;
constexpr double textPoints = 13;           // of a font beside a picture
constexpr double largestSquarePoints = 15;  // of a font that has a square for itself
constexpr QImage::Format format = QImage::Format_ARGB32_Premultiplied;

QFont numberFont(double pixels) {
    QFont font = QGuiApplication::font();
    font.setWeight(QFont::DemiBold);
    font.setPixelSize(std::max(1, static_cast<int>(pixels)));
    return font;
}

double widthOf(const QString& text, const QFont& font) {
    return QFontMetricsF(font).horizontalAdvance(text);
}

// The room of a digit, not of all letters, is centred: a font leaves more above it than below.
void drawText(QImage& image, const QString& text, const QFont& font, const QColor& ink,
              const QRectF& room) {
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(ink);
    const double digitHeight = QFontMetricsF(font).tightBoundingRect(QStringLiteral("0")).height();
    const double left = room.left() + (room.width() - widthOf(text, font)) / 2;
    const double baseline = room.top() + (room.height() + digitHeight) / 2;
    painter.drawText(QPointF(std::round(left), std::round(baseline)), text);
}

QImage emptyImage(int width, int height) {
    QImage image(width, height, format);
    image.fill(Qt::transparent);
    return image;
}

}  // namespace

int squareSide(const Look& look) {
    return static_cast<int>(std::lround(sidePoints * look.scale));
}

QImage emptySquare(const Look& look) {
    return emptyImage(squareSide(look), squareSide(look));
}

QImage numberSquare(const QString& number, const Look& look) {
    QString digits = number;
    digits.remove(u'%');
    QImage square = emptySquare(look);
    const double largest = largestSquarePoints * look.scale;
    const double fitting = largest * square.width() / widthOf(digits, numberFont(largest));
    drawText(square, digits, numberFont(std::min(largest, fitting)), look.ink, square.rect());
    return square;
}

const QImage& PictureWithNumber::joined(const QImage& square, const QString& number,
                                        const Look& look) {
    const QImage picture = square.isNull() ? emptySquare(look) : square;
    if (number_ != number || look_ != look || squareSize_ != picture.size()) {
        number_ = number;
        look_ = look;
        squareSize_ = picture.size();
        drawNumber();
    }
    QPainter painter(&joined_);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, picture);
    return joined_;
}

void PictureWithNumber::drawNumber() {
    const QFont font = numberFont(textPoints * look_.scale);
    const int left = squareSize_.width() + static_cast<int>(std::lround(gapPoints * look_.scale));
    const int width = static_cast<int>(std::ceil(widthOf(number_, font)));
    joined_ = emptyImage(left + width, squareSize_.height());
    drawText(joined_, number_, font, look_.ink, QRectF(left, 0, width, joined_.height()));
}

}  // namespace brimwatch
