// Whether the icon looks as it did when somebody last looked at it: tests/data/icon-*.png hold it
// in both inks, in one row each, at several angles.
//
// After a change that is meant to be seen, BRIMWATCH_KEEP_PICTURES=1 icon_test keeps the new ones
// instead of comparing them, and fails. Look at them before they are committed:
//
//     convert icon-2.png -background '#fbf7ef' -flatten -filter point -resize 800% look.png

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QString>
#include <cstdlib>

#include "icon_fixture.h"

namespace brimwatch {
namespace {

constexpr MenuBarIcon icons[] = {
    {.remaining = 0, .angle = 0, .shake = {}},
    {.remaining = 0.07, .angle = 0.44, .shake = {}},
    {.remaining = 0.42, .angle = 2.64, .shake = {}},
    {.remaining = 0.73, .angle = 4.59, .shake = {}},
    {.remaining = 1, .angle = 5.5, .shake = {}},
    {.remaining = 0.12, .angle = 3.9, .shake = {.radial = -0.8, .angle = 0.12}},
};
constexpr int iconCount = static_cast<int>(std::size(icons));

// Other versions of Qt may round otherwise; a rocket one degree off differs by 60.
constexpr int tolerance = 16;

QImage sheet(double scale) {
    const int side = static_cast<int>(20 * scale);
    QImage result(iconCount * side, 2 * side, QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    MenuBarRenderer renderer(sharedRocket().value());
    for (int column = 0; column < iconCount; ++column) {
        const QPoint place(column * side, 0);
        painter.drawImage(place, *renderer.render(icons[column], QColor(29, 29, 31), scale));
        painter.drawImage(place + QPoint(0, side),
                          *renderer.render(icons[column], QColor(242, 242, 242), scale));
    }
    return result;
}

class IconPictures : public ::testing::TestWithParam<double> {};

TEST_P(IconPictures, LookAsTheyDid) {
    const QString path =
        QStringLiteral(BRIMWATCH_TEST_DATA "/icon-%1.png").arg(QString::number(GetParam()));
    if (std::getenv("BRIMWATCH_KEEP_PICTURES") != nullptr) {
        EXPECT_TRUE(sheet(GetParam()).save(path));
        FAIL() << "kept, not compared: " << path.toStdString();
    }
    const auto difference = test::greatestDifference(sheet(GetParam()), QImage(path));
    ASSERT_TRUE(difference) << path.toStdString();
    EXPECT_LE(*difference, tolerance) << path.toStdString();
}

INSTANTIATE_TEST_SUITE_P(AtScale, IconPictures, ::testing::Values(1.0, 1.5, 2.0, 3.0));

}  // namespace
}  // namespace brimwatch
