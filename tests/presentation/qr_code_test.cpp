#include "presentation/qr_code.h"

#include <gtest/gtest.h>
#include <zbar.h>

#include <QPainter>

namespace brimwatch {
namespace {

// What a reader sees of a picture; nothing if it finds no code.
std::string read(const QImage& picture) {
    const QImage gray = picture.convertToFormat(QImage::Format_Grayscale8);
    QByteArray pixels;
    for (int y = 0; y < gray.height(); ++y)
        pixels.append(reinterpret_cast<const char*>(gray.constScanLine(y)), gray.width());
    zbar::Image image(static_cast<unsigned>(gray.width()), static_cast<unsigned>(gray.height()),
                      "Y800", pixels.constData(), static_cast<unsigned long>(pixels.size()));
    zbar::ImageScanner scanner;
    scanner.scan(image);
    const auto symbol = image.symbol_begin();
    return symbol == image.symbol_end() ? std::string() : symbol->get_data();
}

// As the sheet shows it.
QImage onPaper(const QImage& code) {
    const int scale = qrCodeScale(code.width());
    const int side = (code.width() + 6) * scale;
    QImage paper(side, side, QImage::Format_RGB32);
    paper.fill(Qt::white);
    QPainter(&paper).drawImage(
        QRect(3 * scale, 3 * scale, code.width() * scale, code.width() * scale), code);
    return paper;
}

TEST(QrCode, IsReadAsTheTextThatItWasMadeOf) {
    for (const char* text :
         {"brimwatch://link?v=1&k=AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA",
          "brimwatch://link?v=1&k=__79-vf29fTz8vHw7-7t7Ovq6ejn5uXk4-Lh4N_e3dw", "A"})
        EXPECT_EQ(read(onPaper(qrCode(QString::fromUtf8(text)))), text);
}

TEST(QrCode, CarriesUtf8) {
    EXPECT_EQ(read(onPaper(qrCode(QStringLiteral("연결")))), "연결");
}

TEST(QrCode, HasAWhiteBorderOfOneModule) {
    const QImage code = qrCode(QStringLiteral("A"));
    ASSERT_EQ(code.width(), 23);
    ASSERT_EQ(code.height(), 23);
    for (int i = 0; i < 23; ++i)
        for (const QPoint& place : {QPoint(i, 0), QPoint(i, 22), QPoint(0, i), QPoint(22, i)})
            EXPECT_EQ(code.pixel(place), qRgb(255, 255, 255));
    EXPECT_EQ(code.pixel(1, 1), qRgb(0, 0, 0));
}

// Level M of a code of the first version holds 14 bytes, L would hold 17.
TEST(QrCode, IsOfTheMediumLevel) {
    EXPECT_EQ(qrCode(QStringLiteral("aaaaaaaaaaaaaa")).width(), 23);
    EXPECT_EQ(qrCode(QStringLiteral("aaaaaaaaaaaaaaa")).width(), 27);
}

TEST(QrCode, IsNothingForATextThatFitsInNone) {
    EXPECT_TRUE(qrCode({}).isNull());
    EXPECT_TRUE(qrCode(QString(3000, u'x')).isNull());
    EXPECT_FALSE(qrCode(QString(2000, u'x')).isNull());
}

TEST(QrCode, IsDrawnAboutTwoHundredPointsWideByWholeNumbers) {
    EXPECT_EQ(qrCodeScale(33), 6);
    EXPECT_EQ(33 * qrCodeScale(33), 198);
    EXPECT_EQ(qrCodeScale(125), 2);
    EXPECT_EQ(qrCodeScale(100), 2);
    EXPECT_EQ(qrCodeScale(66), 3);
    EXPECT_EQ(qrCodeScale(1000), 2);
    EXPECT_EQ(qrCodeScale(0), 200);
}

}  // namespace
}  // namespace brimwatch
