#include "platform/linux/notifier_pixmap.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

QByteArray bytesOf(const QImage& picture) {
    NotifierPixmap pixmap;
    writePixmap(picture, pixmap);
    return pixmap.bytes;
}

TEST(NotifierPixmap, HoldsAlphaRedGreenAndBlueOfEachPixelRowByRow) {
    QImage picture(2, 2, QImage::Format_ARGB32);
    picture.setPixel(0, 0, 0x01020304);
    picture.setPixel(1, 0, 0xff112233);
    picture.setPixel(0, 1, 0x00000000);
    picture.setPixel(1, 1, 0x80fedcba);
    NotifierPixmap pixmap;
    writePixmap(picture, pixmap);
    EXPECT_EQ(pixmap.width, 2);
    EXPECT_EQ(pixmap.height, 2);
    EXPECT_EQ(pixmap.bytes, QByteArray::fromHex("01020304ff1122330000000080fedcba"));
}

TEST(NotifierPixmap, HoldsColoursThatAreNotPremultiplied) {
    QImage picture(1, 1, QImage::Format_ARGB32_Premultiplied);
    picture.setPixel(0, 0, 0x80408000);
    EXPECT_EQ(bytesOf(picture), QByteArray::fromHex("8080ff00"));
}

TEST(NotifierPixmap, TakesPicturesOfOtherFormats) {
    QImage picture(1, 2, QImage::Format_RGB888);
    picture.fill(QColor(1, 2, 3));
    EXPECT_EQ(bytesOf(picture), QByteArray::fromHex("ff010203ff010203"));
}

TEST(NotifierPixmap, LeavesThePaddingOfRowsOut) {
    QImage rows(3, 2, QImage::Format_ARGB32);
    rows.fill(0xff00ff00);
    const QImage part(rows.constBits(), 2, 2, rows.bytesPerLine(), rows.format());
    EXPECT_EQ(bytesOf(part).size(), 16);
}

TEST(NotifierPixmap, IsWrittenAgainWithoutNewMemory) {
    QImage picture(22, 22, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    NotifierPixmap pixmap;
    writePixmap(picture, pixmap);
    const char* memory = pixmap.bytes.constData();
    picture.fill(Qt::blue);
    writePixmap(picture, pixmap);
    EXPECT_EQ(pixmap.bytes.constData(), memory);
    EXPECT_EQ(pixmap.bytes.first(4), QByteArray::fromHex("ff0000ff"));
}

}  // namespace
}  // namespace brimwatch
