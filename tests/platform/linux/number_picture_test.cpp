#include "platform/linux/number_picture.h"

#include <QRect>

#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

using Look = StatusItem::Look;

const Look look{true, QColor(0xf2, 0xf2, 0xf2), 1.1};

// What lies around all pixels that are not empty.
QRect inkedPart(const QImage& image) {
    QRect part;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 40) part |= QRect(x, y, 1, 1);
    }
    return part;
}

class NumberPicture : public test::PanelTest {
  protected:
    static QImage filledSquare(const QColor& color, int side = 22) {
        QImage square(side, side, QImage::Format_ARGB32_Premultiplied);
        square.fill(color);
        return square;
    }
};

TEST_F(NumberPicture, IsASquareOfTwentyPoints) {
    EXPECT_EQ(numberSquare("42%", look).size(), QSize(22, 22));
    EXPECT_EQ(numberSquare("42%", {true, Qt::white, 2.2}).size(), QSize(44, 44));
    EXPECT_EQ(inkedPart(emptySquare(look)), QRect());
}

TEST_F(NumberPicture, HoldsEveryNumberWholeAndInTheMiddle) {
    for (const double scale : {0.8, 1.1, 1.65, 2.2, 4.4}) {
        for (const QString number : {"0%", "7%", "42%", "88%", "100%"}) {
            const QImage square = numberSquare(number, {true, Qt::white, scale});
            const QRect part = inkedPart(square);
            SCOPED_TRACE(number.toStdString() + " at " + std::to_string(scale));
            EXPECT_GT(part.height(), square.height() / 4);
            EXPECT_NEAR(part.left(), square.width() - 1 - part.right(), 1 + scale * 2);
            EXPECT_NEAR(part.top(), square.height() - 1 - part.bottom(), 1 + scale);
        }
    }
}

TEST_F(NumberPicture, LeavesTheSignOut) {
    EXPECT_EQ(numberSquare("42%", look), numberSquare("42", look));
    EXPECT_NE(numberSquare("42%", look), numberSquare("43%", look));
}

TEST_F(NumberPicture, IsDrawnWithTheInkOfThePanel) {
    const QImage square = numberSquare("8", {false, QColor(10, 200, 30), 4.4});
    bool isFound = false;
    for (int y = 0; y < square.height(); ++y) {
        for (int x = 0; x < square.width(); ++x)
            isFound = isFound || square.pixelColor(x, y) == QColor(10, 200, 30);
    }
    EXPECT_TRUE(isFound);
}

TEST_F(NumberPicture, StandsOnTheRightOfThePictureThatItIsJoinedTo) {
    PictureWithNumber joiner;
    const QImage wide = joiner.joined(filledSquare(Qt::red), "42%", look);
    EXPECT_EQ(wide.height(), 22);
    EXPECT_GT(wide.width(), 40);
    EXPECT_EQ(wide.copy(0, 0, 22, 22), filledSquare(Qt::red));
    const QRect part = inkedPart(wide.copy(22, 0, wide.width() - 22, 22));
    EXPECT_GE(part.left(), 2);
    EXPECT_GT(part.width(), 15);
    EXPECT_NEAR(part.top(), 22 - 1 - part.bottom(), 2);
}

TEST_F(NumberPicture, FollowsWhatItIsJoinedTo) {
    PictureWithNumber joiner;
    joiner.joined(filledSquare(Qt::red), "42%", look);
    const QImage moved = joiner.joined(filledSquare(Qt::blue), "42%", look);
    EXPECT_EQ(moved.pixelColor(3, 3), QColor(Qt::blue));
    PictureWithNumber fresh;
    EXPECT_EQ(moved, fresh.joined(filledSquare(Qt::blue), "42%", look));
    EXPECT_EQ(joiner.joined(filledSquare(Qt::blue), "7%", look),
              fresh.joined(filledSquare(Qt::blue), "7%", look));
    EXPECT_EQ(joiner.joined(filledSquare(Qt::blue, 44), "7%", look).height(), 44);
}

TEST_F(NumberPicture, StandsBesideAnEmptyPlaceWhereThereIsNoPicture) {
    PictureWithNumber joiner;
    const QImage wide = joiner.joined({}, "42%", look);
    EXPECT_EQ(inkedPart(wide.copy(0, 0, 22, 22)), QRect());
    EXPECT_NE(inkedPart(wide), QRect());
}

}  // namespace
}  // namespace brimwatch
