// Puts an item into the panel that there is, for a real panel to show, and tells what happens to it
// in lines on standard output.
//
//   sample_item [NUMBER] [FRAMES PER SECOND]
//
// Lines on standard input change it: a number, or nothing for none.

#include <QApplication>
#include <QPainter>
#include <QSocketNotifier>
#include <QTimer>
#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/linux/panel_item.h"

namespace {

using namespace brimwatch;

class LightDesktop : public DesktopAppearance {
  public:
    bool isDark() const override { return false; }
    bool reducesMotion() const override { return false; }
    bool increasesContrast() const override { return false; }
    double textScale() const override { return 1; }
};

// A ring with an arc of 150 degrees and a dot that moves.
QImage drawRing(const StatusItem::Look& look, int frame) {
    const int side = static_cast<int>(20 * look.scale);
    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(look.scale, look.scale);
    painter.setPen(QPen(QColor(128, 128, 128, 90), 3));
    painter.drawEllipse(QRectF(3, 3, 14, 14));
    painter.setPen(QPen(QColor(0, 150, 136), 3, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(QRectF(3, 3, 14, 14), 90 * 16, -150 * 16);
    painter.translate(10, 10);
    painter.rotate(frame * 3);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.ink);
    painter.drawEllipse(QPointF(0, -7), 1.8, 1.8);
    return picture;
}

void tell(const std::string& line) {
    std::cout << line << std::endl;
}

void tellEvents(StatusItem& item) {
    QObject::connect(&item, &StatusItem::activated, &item,
                     [](std::optional<QPoint> position, const QString& token) {
                         const std::string place = position ? std::to_string(position->x()) + ' ' +
                                                                  std::to_string(position->y())
                                                            : "nowhere";
                         tell("activated " + place + ' ' + token.toStdString());
                     });
    QObject::connect(&item, &StatusItem::menuOpened, &item, [] { tell("menu opened"); });
    QObject::connect(&item, &StatusItem::commandChosen, &item,
                     [](int id) { tell("command " + std::to_string(id)); });
    QObject::connect(&item, &StatusItem::visibilityChanged, &item,
                     [&item] { tell(item.isVisible() ? "visible" : "invisible"); });
}

}  // namespace

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    const LightDesktop appearance;
    PanelItem item(Environment(environ), appearance);
    tellEvents(item);
    using Kind = StatusItem::MenuRow::Kind;
    item.setMenu({{Kind::text, 0, "Claude 42 % & more"},
                  {Kind::text, 0, "Codex_work 7 %"},
                  {Kind::separator, 0, {}},
                  {Kind::command, 1, "열기"},
                  {Kind::command, 2, "종료"}});
    item.setTitle(count > 1 ? QString::fromUtf8(arguments[1]) : QString());
    int frame = 0;
    const auto draw = [&] { item.setPicture(drawRing(item.look(), frame++)); };
    QObject::connect(&item, &StatusItem::lookChanged, &item, draw);
    draw();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, draw);
    const int framesPerSecond = count > 2 ? std::atoi(arguments[2]) : 0;
    if (framesPerSecond > 0) timer.start(1000 / framesPerSecond);
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&] {
        std::string line;
        if (!std::getline(std::cin, line)) input.setEnabled(false);
        if (std::cin) item.setTitle(QString::fromStdString(line));
    });
    item.show();
    return QApplication::exec();
}
