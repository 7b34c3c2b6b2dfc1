// What a frame of the icon costs beside QPainter drawing the same four things with nothing around
// them.

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QRectF>
#include <QTransform>
#include <cstdio>
#include <cstdlib>

#include "bench/shortest_times.h"
#include "presentation/menu_bar_renderer.h"

namespace brimwatch {
namespace {

// The angle of a rocket that flies for an hour at two seconds a turn and then starts again.
double angleOfFrame(int frame) {
    return 0.314159 * (frame % 36'000);
}

QRectF centred(QSizeF size) {
    return {QPointF(-size.width() / 2, -size.height() / 2), size};
}

void renderFrame(benchmark::State& state) {
    MenuBarRenderer renderer(sharedRocket().value());
    const auto scale = static_cast<double>(state.range(0));
    int frame = 0;
    for ([[maybe_unused]] const auto round : state) {
        const QImage* picture =
            renderer.render({0.73, angleOfFrame(++frame), {}}, Qt::black, scale);
        if (picture == nullptr) std::abort();
        benchmark::DoNotOptimize(picture->constBits());
    }
}

// Two strokes and two turned pictures, always at the same place: nothing is cleared, worked out or
// looked up.
void drawBare(benchmark::State& state) {
    const auto scale = static_cast<double>(state.range(0));
    const MenuBarRocket& rocket = sharedRocket().value();
    const QImage tint = tinted(rocket.image, Qt::black);
    QImage bitmap = makeBitmap(QSize(20, 20) * scale);
    QPainter painter(&bitmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QTransform upright = QTransform::fromScale(scale, scale);
    const QTransform turned = QTransform(upright).translate(10, 3.7184).rotate(100);
    const QPen track(QColor(0, 0, 0, 69), ringWidth, Qt::SolidLine, Qt::RoundCap);
    const QPen accent(QColor(47, 181, 165), ringWidth, Qt::SolidLine, Qt::RoundCap);
    const QRectF ring(3.7184, 3.7184, 12.5632, 12.5632);
    QPainterPath arc;
    arc.arcMoveTo(ring, 0);
    arc.arcTo(ring, 0, 0.73 * 360);
    for ([[maybe_unused]] const auto round : state) {
        painter.setTransform(upright);
        painter.setPen(track);
        painter.drawEllipse(ring);
        painter.setPen(accent);
        painter.drawPath(arc);
        painter.setTransform(turned);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        painter.drawImage(centred(rocket.haloSize), rocket.halo);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.drawImage(centred(rocket.size), tint);
        benchmark::DoNotOptimize(bitmap.constBits());
    }
}

void registerBenchmarks() {
    const auto add = [](const char* name, auto function) {
        // The strokes of QPainter run on other threads as well.
        benchmark::RegisterBenchmark(name, function)
            ->Arg(1)
            ->Arg(2)
            ->Arg(3)
            ->MeasureProcessCPUTime()
            ->Repetitions(5);
    };
    add("bare drawing", drawBare);
    add("frame", renderFrame);
}

}  // namespace
}  // namespace brimwatch

int main(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    benchmark::Initialize(&count, arguments);
    brimwatch::registerBenchmarks();
    brimwatch::bench::ShortestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    std::printf("\n");
    times.printRatio("frame/1", "bare drawing/1", "");
    times.printRatio("frame/2", "bare drawing/2", "goal: at most 1.5");
    times.printRatio("frame/3", "bare drawing/3", "");
    return 0;
}
