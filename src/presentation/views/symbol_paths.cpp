#include "presentation/views/symbol_paths.h"

#include <QLineF>
#include <QPainterPathStroker>
#include <QPolygonF>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <vector>

namespace brimwatch {
namespace {

// Of the grid on which the shapes are drawn: on a finer one Qt would make corners of curves.
constexpr double gridSize = 100;
constexpr QPointF center{50, 50};

QPainterPath circle(double radius) {
    QPainterPath path;
    path.addEllipse(center, radius, radius);
    return path;
}

QPainterPath roundedRectangle(const QRectF& rectangle, double radius) {
    QPainterPath path;
    path.addRoundedRect(rectangle, radius, radius);
    return path;
}

// The line as wide as given, with round ends and bends.
QPainterPath stroke(const QPainterPath& line, double width) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(line).simplified();
}

QPainterPath stroke(std::initializer_list<QPointF> points, double width) {
    QPainterPath line;
    line.addPolygon(QPolygonF(QList<QPointF>(points)));
    return stroke(line, width);
}

// A polygon whose corners are cut by curves that begin `cut` before each of them.
QPainterPath roundedPolygon(const std::vector<QPointF>& corners, double cut) {
    const auto along = [cut](QPointF from, QPointF to) {
        QLineF edge(from, to);
        edge.setLength(cut);
        return edge.p2();
    };
    QPainterPath path;
    for (size_t i = 0; i < corners.size(); ++i) {
        const QPointF& corner = corners[i];
        const QPointF start = along(corner, corners[(i + corners.size() - 1) % corners.size()]);
        if (i == 0) {
            path.moveTo(start);
        } else {
            path.lineTo(start);
        }
        path.quadTo(corner, along(corner, corners[(i + 1) % corners.size()]));
    }
    path.closeSubpath();
    return path;
}

QPainterPath exclamationMark(double top, double bottom, double dotAt) {
    constexpr double width = 10.5;
    QPainterPath mark = stroke({{50, top}, {50, bottom}}, width);
    mark.addEllipse(QPointF(50, dotAt), width * 0.6, width * 0.6);
    return mark;
}

QPainterPath rim() {
    return circle(48).subtracted(circle(40));
}

QPainterPath checkmarkCircle() {
    return circle(48).subtracted(stroke({{29, 53}, {44, 68}, {70, 34}}, 9.5));
}

QPainterPath halfCircle() {
    QPainterPath half;
    half.addRect(0, 0, 50, gridSize);
    return rim().united(circle(44).intersected(half));
}

QPainterPath triangle() {
    return roundedPolygon({{50, 0}, {102, 95}, {-2, 95}}, 15)
        .subtracted(exclamationMark(36, 60, 78));
}

QPainterPath octagon() {
    std::vector<QPointF> corners;
    for (int i = 0; i < 8; ++i) {
        const double angle = (2 * i + 1) * std::numbers::pi / 8;
        corners.push_back(center + 51.5 * QPointF(std::cos(angle), std::sin(angle)));
    }
    return roundedPolygon(corners, 7).subtracted(exclamationMark(27, 54, 73));
}

QPainterPath laptop() {
    const QPainterPath lid =
        roundedRectangle({13, 17, 74, 52}, 8).subtracted(roundedRectangle({22, 26, 56, 34}, 2));
    return lid.united(roundedRectangle({1, 74, 98, 10}, 5));
}

QPainterPath arrows() {
    constexpr double width = 8.5;
    QPainterPath up = stroke({{28, 90}, {28, 12}}, width);
    up = up.united(stroke({{9, 31}, {28, 12}, {47, 31}}, width));
    QPainterPath down = stroke({{72, 10}, {72, 88}}, width);
    down = down.united(stroke({{53, 69}, {72, 88}, {91, 69}}, width));
    return up.united(down);
}

QPainterPath folder() {
    const QPainterPath tab = roundedRectangle({3, 11, 46, 40}, 11);
    const QPainterPath body = roundedRectangle({3, 22, 94, 66}, 11);
    return tab.united(body).subtracted(roundedRectangle({12, 42, 76, 37}, 4));
}

// Upright, with its point below, and then turned.
QPainterPath pencil() {
    QPainterPath upright = roundedRectangle({38, -14, 24, 17}, 5);
    upright.addRect(38, 8, 24, 66);
    upright.addPolygon(QPolygonF({{38, 79}, {62, 79}, {50, 110}, {38, 79}}));
    const QPainterPath turned = QTransform().rotate(45).map(upright);
    return turned.translated(center - turned.boundingRect().center());
}

QPainterPath pauseCircle() {
    return rim()
        .united(roundedRectangle({33, 28, 11, 44}, 4))
        .united(roundedRectangle({56, 28, 11, 44}, 4));
}

QPainterPath exclamationCircle() {
    return rim().united(exclamationMark(25, 55, 74));
}

QPainterPath questionCircle() {
    QPainterPath hook({34, 41});
    hook.cubicTo(34, 19, 67, 19, 67, 40);
    hook.cubicTo(67, 51, 50, 49, 50, 60);
    QPainterPath dot;
    dot.addEllipse(QPointF(50, 76), 6.3, 6.3);
    return rim().united(stroke(hook, 9.5)).united(dot);
}

QPainterPath threeLines() {
    constexpr double width = 9;
    return stroke({{8, 24}, {92, 24}}, width)
        .united(stroke({{8, 50}, {92, 50}}, width))
        .united(stroke({{8, 76}, {92, 76}}, width));
}

QPainterPath chevrons() {
    constexpr double width = 11;
    return stroke({{22, 36}, {50, 8}, {78, 36}}, width)
        .united(stroke({{22, 64}, {50, 92}, {78, 64}}, width));
}

struct NamedShape {
    QStringView name;
    QPainterPath (*shape)() = nullptr;
};

constexpr std::array shapes = {
    NamedShape{u"checkmark.circle.fill", checkmarkCircle},
    NamedShape{u"circle.lefthalf.filled", halfCircle},
    NamedShape{u"exclamationmark.triangle.fill", triangle},
    NamedShape{u"exclamationmark.octagon.fill", octagon},
    NamedShape{u"laptopcomputer", laptop},
    NamedShape{u"arrow.up.arrow.down", arrows},
    NamedShape{u"folder", folder},
    NamedShape{u"pencil", pencil},
    NamedShape{u"pause.circle", pauseCircle},
    NamedShape{u"exclamationmark.circle", exclamationCircle},
    NamedShape{u"questionmark.circle", questionCircle},
    NamedShape{u"line.3.horizontal", threeLines},
    NamedShape{u"chevron.up.chevron.down", chevrons},
};

}  // namespace

QPainterPath symbolPath(QStringView name) {
    const auto* const found = std::find_if(
        shapes.begin(), shapes.end(), [name](const NamedShape& each) { return each.name == name; });
    if (found == shapes.end()) return {};
    return QTransform::fromScale(1 / gridSize, 1 / gridSize).map(found->shape());
}

}  // namespace brimwatch
