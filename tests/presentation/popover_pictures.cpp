// Draws the popover with sample cards into PNG files, to be looked at: popover_pictures FOLDER
//
// QT_SCALE_FACTOR=2 in its environment draws for dense screens.

#include <QImage>
#include <QQuickView>
#include <vector>

#include "presentation/views/quick_popover.h"
#include "sample_cards.h"
#include "sample_content.h"
#include "scene_pictures.h"

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

QImage draw(const Scene& scene, Appearance appearance) {
    SampleContent content(scene.cards);
    QuickPopover popover({.content = content.model()});
    popover.setAppearance(appearance);
    popover.setTextScale(scene.textScale);
    popover.show(QPoint(400, 0), QString());
    return popover.isShown() ? popover.window()->grabWindow() : QImage();
}

}  // namespace
}  // namespace brimwatch::test

int main(int count, char** arguments) {
    using namespace brimwatch::test;
    return drawOnCommand(count, arguments,
                         [](const QString& folder) { return drawScenes(folder, scenes(), draw); });
}
