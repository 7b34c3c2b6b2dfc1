#include "presentation/views/symbol_paths.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QString>
#include <iterator>
#include <set>

#include "presentation/views/symbol.h"

namespace brimwatch {
namespace {

constexpr const char* names[] = {"checkmark.circle.fill",
                                 "circle.lefthalf.filled",
                                 "exclamationmark.triangle.fill",
                                 "exclamationmark.octagon.fill",
                                 "laptopcomputer",
                                 "arrow.up.arrow.down",
                                 "folder",
                                 "pencil",
                                 "pause.circle",
                                 "exclamationmark.circle",
                                 "questionmark.circle",
                                 "line.3.horizontal",
                                 "chevron.up.chevron.down"};

QImage drawn(const char* name, int side, const QColor& color = Qt::black) {
    Symbol symbol;
    symbol.setName(QString::fromUtf8(name));
    symbol.setColor(color);
    symbol.setSize(QSizeF(side, side));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    symbol.paint(&painter);
    return image;
}

// Of the square, 0 to 1.
double inked(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            sum += image.pixelColor(x, y).alphaF();
    }
    return sum / (image.width() * image.height());
}

TEST(SymbolPaths, FillTheirSquareAndStayWithin) {
    for (const char* name : names) {
        const QRectF bounds = symbolPath(QString::fromUtf8(name)).boundingRect();
        EXPECT_GE(bounds.left(), 0) << name;
        EXPECT_GE(bounds.top(), 0) << name;
        EXPECT_LE(bounds.right(), 1) << name;
        EXPECT_LE(bounds.bottom(), 1) << name;
        EXPECT_GE(std::max(bounds.width(), bounds.height()), 0.8) << name;
        EXPECT_NEAR(bounds.center().x(), 0.5, 0.03) << name;
    }
}

TEST(SymbolPaths, AreEmptyForANameThatIsNone) {
    EXPECT_TRUE(symbolPath(u"").isEmpty());
    EXPECT_TRUE(symbolPath(u"checkmark").isEmpty());
    EXPECT_EQ(inked(drawn("checkmark", 20)), 0);
}

TEST(SymbolPaths, AreToldApartBySight) {
    for (const char* one : names) {
        for (const char* other : names) {
            if (one == other) continue;
            const QImage first = drawn(one, 12);
            const QImage second = drawn(other, 12);
            double difference = 0;
            for (int y = 0; y < 12; ++y) {
                for (int x = 0; x < 12; ++x)
                    difference += std::abs(first.pixelColor(x, y).alphaF() -
                                           second.pixelColor(x, y).alphaF());
            }
            EXPECT_GT(difference / 144, 0.08) << one << ", " << other;
        }
    }
}

TEST(SymbolPaths, HaveTheSameWeightAtEachSize) {
    for (const char* name : names) {
        const double large = inked(drawn(name, 200));
        EXPECT_GT(large, 0.15) << name;
        EXPECT_LT(large, 0.85) << name;
        EXPECT_NEAR(inked(drawn(name, 12)), large, 0.02) << name;
        EXPECT_NEAR(inked(drawn(name, 24)), large, 0.02) << name;
    }
}

struct Pixel {
    const char* name;
    QPoint place;  // in a square of 100
    bool isInked;
};

TEST(SymbolPaths, ShowWhatTheirNamesSay) {
    constexpr Pixel pixels[] = {
        {"checkmark.circle.fill", {50, 10}, true},           // the disc
        {"checkmark.circle.fill", {44, 66}, false},          // the check
        {"circle.lefthalf.filled", {30, 50}, true},          // its left half
        {"circle.lefthalf.filled", {70, 50}, false},         // its right half
        {"circle.lefthalf.filled", {94, 50}, true},          // the rim
        {"exclamationmark.triangle.fill", {15, 10}, false},  // beside the peak
        {"exclamationmark.triangle.fill", {20, 88}, true},   // a lower corner
        {"exclamationmark.triangle.fill", {50, 50}, false},  // the mark
        {"exclamationmark.octagon.fill", {5, 5}, false},     // a cut corner
        {"exclamationmark.octagon.fill", {20, 50}, true},
        {"exclamationmark.octagon.fill", {50, 40}, false},  // the mark
        {"laptopcomputer", {50, 43}, false},                // the screen
        {"laptopcomputer", {50, 21}, true},                 // its frame
        {"laptopcomputer", {50, 79}, true},                 // the base
        {"arrow.up.arrow.down", {28, 16}, true},            // the tip that points up
        {"arrow.up.arrow.down", {72, 84}, true},            // and down
        {"arrow.up.arrow.down", {50, 50}, false},
        {"folder", {20, 16}, true},                   // the tab
        {"folder", {80, 16}, false},                  // beside it
        {"folder", {50, 60}, false},                  // the front
        {"folder", {50, 84}, true},                   // its lower edge
        {"pencil", {16, 84}, true},                   // the point, below to the left
        {"pencil", {50, 50}, true},                   // the shaft
        {"pencil", {20, 20}, false},                  // beside it
        {"pause.circle", {38, 50}, true},             // a bar
        {"pause.circle", {50, 50}, false},            // between the two
        {"pause.circle", {50, 6}, true},              // the rim
        {"exclamationmark.circle", {50, 40}, true},   // the mark
        {"exclamationmark.circle", {50, 74}, true},   // its dot
        {"exclamationmark.circle", {30, 50}, false},  // beside it
        {"exclamationmark.circle", {94, 50}, true},   // the rim
        {"questionmark.circle", {66, 40}, true},      // the hook
        {"questionmark.circle", {50, 40}, false},     // within it
        {"questionmark.circle", {50, 76}, true},      // the dot
        {"line.3.horizontal", {20, 24}, true},        // a line
        {"line.3.horizontal", {20, 37}, false},       // between two
        {"line.3.horizontal", {80, 76}, true},        // the last one
        {"chevron.up.chevron.down", {50, 10}, true},  // the tip that points up
        {"chevron.up.chevron.down", {50, 90}, true},  // and down
        {"chevron.up.chevron.down", {50, 50}, false},
    };
    for (const Pixel& pixel : pixels) {
        const int alpha = drawn(pixel.name, 100).pixelColor(pixel.place).alpha();
        EXPECT_EQ(alpha, pixel.isInked ? 255 : 0)
            << pixel.name << " at " << pixel.place.x() << ", " << pixel.place.y();
    }
}

TEST(Symbols, AreDrawnInTheirColour) {
    const QImage image = drawn("checkmark.circle.fill", 100, QColor(168, 83, 0));
    EXPECT_EQ(image.pixelColor(50, 10), QColor(168, 83, 0));
}

TEST(Symbols, TellOfAChangeOnce) {
    Symbol symbol;
    int changes = 0;
    QObject::connect(&symbol, &Symbol::nameChanged, [&changes] { ++changes; });
    QObject::connect(&symbol, &Symbol::colorChanged, [&changes] { changes += 10; });
    symbol.setName(QStringLiteral("laptopcomputer"));
    symbol.setName(QStringLiteral("laptopcomputer"));
    symbol.setColor(Qt::red);
    symbol.setColor(Qt::red);
    EXPECT_EQ(changes, 11);
}

}  // namespace
}  // namespace brimwatch
