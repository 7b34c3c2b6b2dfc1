#include "popover_fixture.h"

namespace brimwatch {
namespace {

using test::spoken;
using test::Spoken;

constexpr double scale = 0.68;
constexpr double onePixel = 1;

class UsageCardView : public test::PopoverFixture {
  protected:
    void show(const UsageCardContent& card, double textScale = 1) {
        PopoverFixture::show({card}, textScale);
    }
    void show(UsageLevel level) { show(test::withLevel(test::comfortableCard(), level)); }

    static const ViewPalette& light() {
        static const ViewPalette palette;
        return palette;
    }
};

TEST_F(UsageCardView, HasThePlaceAndGroundOfACard) {
    show(test::comfortableCard());
    EXPECT_EQ(place("card").left(), 12);
    EXPECT_EQ(place("card").width(), 246);
    EXPECT_EQ(place("cardBackground"), place("card"));
    EXPECT_EQ(color("cardBackground"), light().cardFill());
    EXPECT_DOUBLE_EQ(item("cardBackground").property("radius").toDouble(), 26 * scale);
    EXPECT_NEAR(place("providerDot").left() - place("card").left(), 18 * scale, onePixel);
    EXPECT_NEAR(place("card").bottom() - place("freshness").bottom(), 18 * scale, onePixel);
}

struct FontRow {
    const char* name;
    double size;
    int weight;
};

// Sizes are those of the text styles by the scale of the card, in whole pixels.
TEST_F(UsageCardView, WritesEachTextInItsSizeAndWeight) {
    constexpr FontRow rows[] = {
        {"title", 17, QFont::DemiBold},       {"planText", 12, QFont::DemiBold},
        {"amount", 44, QFont::Bold},          {"amountSuffix", 20, QFont::DemiBold},
        {"statusText", 15, QFont::DemiBold},  {"resetText", 15, QFont::DemiBold},
        {"fiveHourTitle", 15, QFont::Normal}, {"fiveHourValue", 15, QFont::DemiBold},
        {"creditTitle", 15, QFont::Normal},   {"creditValue", 15, QFont::DemiBold},
        {"freshness", 13, QFont::Normal},     {"recentTitle", 12, QFont::Normal},
        {"recentText", 12, QFont::DemiBold},  {"fiveHourResetText", 15, QFont::Normal},
    };
    for (const double textScale : {1.0, 1.25, 2.0}) {
        show(test::codexCard(), textScale);
        for (const FontRow& row : rows) {
            EXPECT_EQ(pixelSize(row.name), qRound(row.size * textScale * scale)) << row.name;
            EXPECT_EQ(weight(row.name), row.weight) << row.name;
        }
    }
}

struct ColorRow {
    const char* name;
    QColor color;
};

TEST_F(UsageCardView, ColoursEachPart) {
    const ColorRow rows[] = {
        {"title", light().primaryLabel()},
        {"planText", light().secondaryLabel()},
        {"amount", light().primaryLabel()},
        {"amountSuffix", light().primaryLabel()},
        {"recentTitle", light().primaryLabel()},
        {"recentText", light().primaryLabel()},
        {"track", light().tertiaryFill()},
        {"resetText", light().secondaryLabel()},
        {"fiveHourTitle", light().secondaryLabel()},
        {"fiveHourResetText", light().secondaryLabel()},
        {"creditTitle", light().secondaryLabel()},
        {"creditValue", light().levelComfortable()},
        {"freshness", light().secondaryLabel()},
        {"freshnessSymbol", light().secondaryLabel()},
    };
    show(test::codexCard());
    for (const ColorRow& row : rows)
        EXPECT_EQ(color(row.name), row.color) << row.name;
}

TEST_F(UsageCardView, FollowsTheAppearanceWhileItIsShown) {
    show(test::comfortableCard());
    popover_->setAppearance(Appearance::dark);
    EXPECT_EQ(color("cardBackground"), colors::brandNavy);
    EXPECT_EQ(color("statusText"), colors::brandTeal);
    EXPECT_EQ(color("amount"), colors::primaryLabel.dark);
}

TEST_F(UsageCardView, MarksTheProviderByTheDotsColour) {
    show(test::comfortableCard());
    EXPECT_EQ(color("providerDot"), light().indigo());
    EXPECT_NEAR(place("providerDot").width(), 10 * scale, onePixel);
    EXPECT_NEAR(place("providerDot").height(), 10 * scale, onePixel);
    show(test::codexCard());
    EXPECT_EQ(color("providerDot"), light().teal());
}

struct LevelRow {
    UsageLevel level;
    const char* text;
    const char* symbol;
    QColor tint;
    QColor ink;
    QColor fiveHourInk;
};

TEST_F(UsageCardView, ShowsALevelInWordsSignsAndColours) {
    const LevelRow rows[] = {
        {UsageLevel::comfortable, "넉넉해요", "checkmark.circle.fill", light().levelComfortable(),
         light().levelComfortable(), light().primaryLabel()},
        {UsageLevel::overHalf, "절반 넘게 썼어요", "circle.lefthalf.filled",
         light().levelOverHalf(), light().primaryLabel(), light().primaryLabel()},
        {UsageLevel::warning, "슬슬 아껴 써요", "exclamationmark.triangle.fill",
         light().levelWarning(), light().levelWarning(), light().levelWarning()},
        {UsageLevel::exhausted, "한도에 닿았어요", "exclamationmark.octagon.fill",
         light().levelExhausted(), light().levelExhausted(), light().levelExhausted()},
    };
    for (const LevelRow& row : rows) {
        UsageCardContent card = test::withLevel(test::comfortableCard(), row.level);
        card.fiveHourLevel = row.level;
        show(card);
        EXPECT_EQ(text("statusText"), QString::fromUtf8(row.text));
        EXPECT_EQ(item("statusSymbol").property("name").toString(), QString::fromUtf8(row.symbol));
        EXPECT_EQ(color("statusSymbol"), row.ink) << row.text;
        EXPECT_EQ(color("statusText"), row.ink) << row.text;
        EXPECT_EQ(color("fill"), row.tint) << row.text;
        EXPECT_EQ(color("fiveHourValue"), row.fiveHourInk) << row.text;
    }
}

struct GaugeRow {
    double fraction;
    double width;  // of the track
};

TEST_F(UsageCardView, FillsItsBarAsFarAsTheFractionGoes) {
    constexpr GaugeRow rows[] = {{0.82, 0.82}, {1, 1}, {0.005, 0.005}, {0, 0}, {-1, 0}, {2, 1}};
    for (const GaugeRow& row : rows) {
        UsageCardContent card = test::comfortableCard();
        card.gaugeFraction = row.fraction;
        show(card);
        const QRectF track = place("track");
        EXPECT_NEAR(place("fill").width(), row.width * track.width(), 1e-6) << row.fraction;
        EXPECT_EQ(place("fill").topLeft(), track.topLeft());
        EXPECT_EQ(place("fill").height(), track.height());
        EXPECT_NEAR(track.height(), 10 * scale, onePixel);
        EXPECT_NEAR(track.width(), 246 - 2 * 18 * scale, onePixel);
        EXPECT_EQ(item("fill").isVisible(), row.width > 0);
    }
}

TEST_F(UsageCardView, StacksItsPartsAtTheirDistances) {
    show(test::codexCard());
    const QRectF gauge = place("menu.gauge.codex-default");
    const QRectF amount = place("menu.subscription.codex-default");
    const QRectF status = place("statusText");
    const QRectF fiveHour = place("fiveHourRow");
    EXPECT_NEAR(gauge.top() - amount.bottom(), 10 * scale, onePixel);
    EXPECT_NEAR(status.top() - gauge.bottom(), 10 * scale, onePixel);
    EXPECT_NEAR(place("divider").top() - status.bottom(), 14 * scale, onePixel);
    EXPECT_NEAR(fiveHour.top() - place("divider").bottom(), 14 * scale, onePixel);
    EXPECT_NEAR(place("creditRow").top() - fiveHour.bottom(), 14 * scale, onePixel);
    EXPECT_NEAR(place("freshness").top() - place("creditRow").bottom(), 14 * scale, onePixel);
    EXPECT_NEAR(place("title").left() - place("providerDot").right(), 8 * scale, onePixel);
    EXPECT_NEAR(place("menu.plan.codex-default").left() - place("title").right(), 8 * scale,
                onePixel);
    EXPECT_NEAR(place("resetText").left() - status.right(), 8 * scale, onePixel);
    EXPECT_NEAR(place("creditValue").left() - place("creditTitle").right(), 4 * scale, onePixel);
}

// Where a line of text stands.
double baseline(QQuickItem& text) {
    return text.mapRectToScene({}).top() + text.baselineOffset();
}

TEST_F(UsageCardView, SetsTheTextsOfARowOnOneLine) {
    for (const double textScale : {1.0, 1.4, 2.0}) {
        show(test::fullestCard(), textScale);
        EXPECT_DOUBLE_EQ(baseline(item("amount")), baseline(item("amountSuffix")));
        EXPECT_DOUBLE_EQ(baseline(item("statusText")), baseline(item("resetText")));
        EXPECT_DOUBLE_EQ(baseline(item("fiveHourTitle")), baseline(item("fiveHourValue")));
        EXPECT_DOUBLE_EQ(baseline(item("fiveHourTitle")), baseline(item("fiveHourResetText")));
    }
}

TEST_F(UsageCardView, PutsRecentUsageAtTheFarEnd) {
    show(test::comfortableCard());
    const QRectF recent = place("menu.recentUsage.claude-default");
    EXPECT_NEAR(recent.right(), place("track").right(), onePixel);
    EXPECT_NEAR(recent.center().y(), place("menu.subscription.claude-default").center().y(),
                onePixel);
    EXPECT_EQ(text("recentTitle"), QStringLiteral("최근 4시간"));
    EXPECT_EQ(text("recentText"), QStringLiteral("주간 약 2.4%"));
}

TEST_F(UsageCardView, ShrinksTheAmountOnlyAsFarAsRecentUsageNeeds) {
    show(test::fullestCard(), 1.49);
    const QRectF amount = place("menu.subscription.codex-longest");
    ASSERT_LT(amount.width(), item("menu.subscription.codex-longest").implicitWidth());
    const QRectF recent = place("menu.recentUsage.codex-longest");
    EXPECT_NEAR(recent.left() - amount.right(), 12 * scale, 2 * onePixel);
    EXPECT_NEAR(recent.right(), place("track").right(), onePixel);
}

TEST_F(UsageCardView, PutsRecentUsageBelowTheAmountAtAccessibilitySizes) {
    for (const double textScale : {1.5, 2.0}) {
        show(test::comfortableCard(), textScale);
        const QRectF recent = place("menu.recentUsage.claude-default");
        const QRectF amount = place("menu.subscription.claude-default");
        EXPECT_NEAR(recent.top() - amount.bottom(), 8 * scale, onePixel);
        EXPECT_EQ(recent.left(), amount.left());
    }
}

TEST_F(UsageCardView, LeavesOutWhatAnAccountHasNot) {
    UsageCardContent card = test::comfortableCard();
    card.hasRecentUsage = false;
    card.hasSecondWindow = false;
    card.resetText.clear();
    show(card);
    for (const char* name :
         {"menu.recentUsage.claude-default", "divider", "fiveHourRow", "creditRow", "resetText"})
        EXPECT_FALSE(item(name).isVisible()) << name;
    EXPECT_TRUE(item("mainBlock").isVisible());
    EXPECT_EQ(color("amount"), light().primaryLabel());
}

TEST_F(UsageCardView, KeepsHeaderAndFreshnessWithoutAnyWindow) {
    show(test::comfortableCard());
    const double fullHeight = place("card").height();
    UsageCardContent card = test::comfortableCard();
    card.hasMainWindow = false;
    card.hasSecondWindow = false;
    show(card);
    EXPECT_FALSE(item("mainBlock").isVisible());
    EXPECT_TRUE(item("title").isVisible());
    EXPECT_TRUE(item("menu.plan.claude-default").isVisible());
    EXPECT_TRUE(item("freshness").isVisible());
    EXPECT_LT(place("card").height(), fullHeight / 2);
}

TEST_F(UsageCardView, SaysNothingMoreOfAFiveHourWindowThatHasPassed) {
    UsageCardContent card = test::comfortableCard();
    card.fiveHourText = QStringLiteral("새 값 대기");
    card.fiveHourPassed = true;
    card.fiveHourLevel = UsageLevel::exhausted;
    show(card);
    EXPECT_EQ(text("fiveHourValue"), QStringLiteral("새 값 대기"));
    EXPECT_EQ(color("fiveHourValue"), light().secondaryLabel());
    EXPECT_FALSE(item("fiveHourResetText").isVisible());
}

TEST_F(UsageCardView, AsksForAttentionByAnOrangeSign) {
    show(test::comfortableCard());
    EXPECT_EQ(item("freshnessSymbol").property("name").toString(),
              QStringLiteral("laptopcomputer"));
    UsageCardContent card = test::comfortableCard();
    card.needsAttention = true;
    show(card);
    EXPECT_EQ(item("freshnessSymbol").property("name").toString(),
              QStringLiteral("exclamationmark.triangle.fill"));
    EXPECT_EQ(color("freshnessSymbol"), light().orange());
    EXPECT_EQ(color("freshness"), light().secondaryLabel());
}

struct SpokenRow {
    const char* name;
    Spoken spoken;
};

TEST_F(UsageCardView, TellsAScreenReaderEachPart) {
    show(test::codexCard());
    const SpokenRow rows[] = {
        {"card", {QAccessible::Grouping, QStringLiteral("Codex")}},
        {"title", {QAccessible::StaticText, QStringLiteral("Codex")}},
        {"menu.plan.codex-default", {QAccessible::StaticText, QStringLiteral("Plus")}},
        {"menu.subscription.codex-default", {QAccessible::StaticText, QStringLiteral("82% 남음")}},
        {"menu.recentUsage.codex-default",
         {QAccessible::StaticText, QStringLiteral("최근 4시간 주간 약 2.4%")}},
        {"menu.gauge.codex-default", {QAccessible::ProgressBar, QStringLiteral("주간 한도 남음")}},
        {"statusText", {QAccessible::StaticText, QStringLiteral("넉넉해요")}},
        {"resetText",
         {QAccessible::StaticText, QStringLiteral("11월 24일 (화) 오후 3시에 초기화")}},
        {"fiveHourTitle", {QAccessible::StaticText, QStringLiteral("5시간")}},
        {"fiveHourValue", {QAccessible::StaticText, QStringLiteral("64% 남음")}},
        {"fiveHourResetText", {QAccessible::StaticText, QStringLiteral("오후 6:20에 초기화")}},
        {"creditRow", {QAccessible::StaticText, QStringLiteral("크레딧 12.50 남음")}},
        {"freshness", {QAccessible::StaticText, QStringLiteral("Codex에서 방금 받음")}},
    };
    for (const SpokenRow& row : rows)
        EXPECT_EQ(spoken(&item(row.name)), row.spoken) << row.name;
}

TEST_F(UsageCardView, TellsAScreenReaderTheValueOfItsBar) {
    show(test::comfortableCard());
    QAccessibleInterface* bar =
        QAccessible::queryAccessibleInterface(&item("menu.gauge.claude-default"));
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->text(QAccessible::Description), QStringLiteral("82%"));
    EXPECT_EQ(bar->childCount(), 0);
}

// What an accessible element tells as a whole, its parts do not tell again.
TEST_F(UsageCardView, TellsAScreenReaderNothingTwice) {
    show(test::codexCard());
    std::vector<std::string> names;
    const std::function<void(QAccessibleInterface*)> collect = [&](QAccessibleInterface* element) {
        if (!element->text(QAccessible::Name).isEmpty())
            names.push_back(element->text(QAccessible::Name).toStdString());
        for (int index = 0; index < element->childCount(); ++index)
            collect(element->child(index));
    };
    collect(QAccessible::queryAccessibleInterface(&item("card")));
    EXPECT_THAT(names,
                ::testing::UnorderedElementsAre(
                    "Codex", "Codex", "Plus", "82% 남음", "최근 4시간 주간 약 2.4%",
                    "주간 한도 남음", "넉넉해요", "11월 24일 (화) 오후 3시에 초기화", "5시간",
                    "64% 남음", "오후 6:20에 초기화", "크레딧 12.50 남음", "Codex에서 방금 받음"));
}

bool isCut(QQuickItem& text) {
    return text.property("truncated").toBool();
}

TEST_F(UsageCardView, CutsLongNamesWithDots) {
    show(test::fullestCard());
    EXPECT_TRUE(isCut(item("title")));
    EXPECT_TRUE(isCut(item("planText")));
    EXPECT_GT(place("title").width(), 80);
    EXPECT_LE(place("menu.plan.codex-longest").right(), place("track").right());
    EXPECT_NEAR(place("menu.plan.codex-longest").right(), place("track").right(), onePixel);
    show(test::comfortableCard());
    EXPECT_FALSE(isCut(item("title")));
    EXPECT_FALSE(isCut(item("planText")));
}

TEST_F(UsageCardView, CutsNothingElseAtTheUsualSize) {
    show(test::fullestCard());
    for (const char* name : {"amount", "amountSuffix", "recentTitle", "recentText", "statusText",
                             "resetText", "fiveHourTitle", "fiveHourValue", "fiveHourResetText",
                             "creditTitle", "creditValue", "freshness"})
        EXPECT_FALSE(isCut(item(name))) << name;
}

TEST_F(UsageCardView, ShrinksBeforeItCuts) {
    show(test::fullestCard(), 1.5);
    const auto drawnHeight = [this](const char* name) {
        return item(name).property("contentHeight").toDouble();
    };
    EXPECT_FALSE(isCut(item("statusText")));
    EXPECT_FALSE(isCut(item("resetText")));
    EXPECT_LT(drawnHeight("statusText"), drawnHeight("fiveHourTitle"));
    EXPECT_EQ(item("statusText").property("minimumPixelSize"), qRound(15 * 1.5 * scale * 0.8));
    EXPECT_EQ(item("fiveHourValue").property("minimumPixelSize"), qRound(15 * 1.5 * scale * 0.8));
    EXPECT_EQ(item("amount").property("minimumPixelSize"), qRound(44 * 1.5 * scale * 0.5));
}

TEST_F(UsageCardView, KeepsEveryPartWithinItsPaddingAtEachSize) {
    for (const double textScale : {0.8, 1.0, 1.25, 1.49, 1.5, 2.0, 3.0}) {
        show(test::fullestCard(), textScale);
        const QRectF card = place("card");
        const double padding = 18 * scale - onePixel;
        for (const char* name :
             {"title", "menu.plan.codex-longest", "amount", "amountSuffix", "recentTitle",
              "recentText", "track", "statusText", "resetText", "fiveHourTitle", "fiveHourValue",
              "fiveHourResetText", "creditTitle", "creditValue", "freshness"}) {
            const QRectF part = place(name);
            EXPECT_GE(part.left(), card.left() + padding) << name << " at " << textScale;
            EXPECT_LE(part.right(), card.right() - padding) << name << " at " << textScale;
            EXPECT_LE(part.bottom(), card.bottom() - padding) << name << " at " << textScale;
        }
    }
}

TEST_F(UsageCardView, BreaksALongHintIntoLines) {
    show(test::fullestCard());
    EXPECT_GT(item("freshness").property("lineCount").toInt(), 1);
    EXPECT_LE(place("freshness").bottom(), place("card").bottom() - 18 * scale + onePixel);
}

TEST_F(UsageCardView, TakesNamesAsPlainText) {
    UsageCardContent card = test::comfortableCard();
    card.title = QStringLiteral("<b>x</b>");
    show(card);
    EXPECT_EQ(item("title").property("textFormat").toInt(), Qt::PlainText);
    EXPECT_EQ(spoken(&item("title")).name, QStringLiteral("<b>x</b>"));
}

}  // namespace
}  // namespace brimwatch
