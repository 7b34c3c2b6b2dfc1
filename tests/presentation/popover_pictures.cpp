// Draws the popover with sample cards into PNG files, to be looked at: popover_pictures FOLDER
//
// QT_SCALE_FACTOR=2 in its environment draws for dense screens.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QQuickView>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "presentation/views/quick_popover.h"
#include "sample_cards.h"
#include "sample_content.h"

namespace brimwatch::test {
namespace {

struct Scene {
    QString name;
    std::vector<UsageCardContent> cards;
    double textScale = 1;
};

std::vector<Scene> scenes() {
    const auto one = [](UsageLevel level) {
        return std::vector{withLevel(comfortableCard(), level)};
    };
    UsageCardContent bare = comfortableCard();
    bare.hasMainWindow = bare.hasSecondWindow = false;
    UsageCardContent passed = withLevel(codexCard(), UsageLevel::warning);
    passed.fiveHourText = QStringLiteral("새 값 대기");
    passed.fiveHourPassed = true;
    return {{QStringLiteral("one"), one(UsageLevel::comfortable)},
            {QStringLiteral("over-half"), one(UsageLevel::overHalf)},
            {QStringLiteral("warning"), one(UsageLevel::warning)},
            {QStringLiteral("exhausted"), one(UsageLevel::exhausted)},
            {QStringLiteral("two"), {comfortableCard(), codexCard()}},
            {QStringLiteral("six"), cards(6)},
            {QStringLiteral("fullest"), {fullestCard(), bare}},
            {QStringLiteral("waiting"), {passed}},
            {QStringLiteral("empty"), {}},
            {QStringLiteral("text-1.25"), {comfortableCard(), codexCard()}, 1.25},
            {QStringLiteral("text-1.5"), {fullestCard()}, 1.5},
            {QStringLiteral("text-2"), {fullestCard()}, 2}};
}

bool draw(const Scene& scene, Popover::Appearance appearance, const QString& file) {
    SampleContent content(scene.cards);
    QuickPopover popover({.content = content.model()});
    popover.setAppearance(appearance);
    popover.setTextScale(scene.textScale);
    popover.show(QPoint(400, 0), QString());
    if (!popover.isShown()) return false;
    const QImage picture = popover.window()->grabWindow();
    return !picture.isNull() && picture.save(file);
}

int drawAll(const QString& folder) {
    if (!QDir().mkpath(folder)) return EXIT_FAILURE;
    for (const Scene& scene : scenes()) {
        const QString name = folder + QLatin1Char('/') + scene.name;
        const bool isDrawn =
            draw(scene, Popover::Appearance::light, name + QLatin1String("-light.png")) &&
            draw(scene, Popover::Appearance::dark, name + QLatin1String("-dark.png"));
        if (!isDrawn) {
            std::cerr << qPrintable(scene.name) << " could not be drawn\n";
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace brimwatch::test

int main(int count, char** arguments) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(count, arguments);
    if (count != 2) {
        std::cerr << "usage: popover_pictures FOLDER\n";
        return 2;
    }
    return brimwatch::test::drawAll(QString::fromLocal8Bit(arguments[1]));
}
