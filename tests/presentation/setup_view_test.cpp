#include <gmock/gmock.h>

#include <QFont>

#include "presentation/colors.h"
#include "presentation/language_translator.h"
#include "presentation/views/view_module.h"
#include "setup_view_fixture.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;
using test::Spoken;
using test::spoken;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetupViewTest : public test::SetupViewFixture {
  protected:
    void showThreeCards(double textScale = 1) {
        startWithThreeCards();
        show(textScale);
    }
    void showWithServices() {
        startWithServices();
        show();
    }
    // What is seen of it.
    static std::vector<std::string> koreanTexts(QQuickItem& around) {
        std::vector<std::string> found;
        if (!around.isVisible()) return found;
        const QString text = textOf(around);
        const bool isKorean = std::any_of(text.begin(), text.end(), [](QChar letter) {
            return letter.script() == QChar::Script_Hangul;
        });
        if (isKorean) found.push_back(text.toStdString());
        for (QQuickItem* child : around.childItems()) {
            const std::vector<std::string> below = koreanTexts(*child);
            found.insert(found.end(), below.begin(), below.end());
        }
        return found;
    }
    // Its section, found by what lies in it.
    QString titleOf(const char* section) { return textOf(itemIn(item(section), "sectionTitle")); }
};

TEST_F(SetupViewTest, HasItsSectionsInOrder) {
    showThreeCards();
    const std::pair<const char*, const char*> sections[] = {
        {"claude", "Claude Code"},           {"codex", "Codex"},
        {"menuCardOrder", "메뉴 카드 순서"}, {"iPhone", "iPhone으로 보내기"},
        {"android", "안드로이드 연결"},      {"general", "일반"},
        {"removal", "앱을 지우기 전에"}};
    double bottom = place(item("promise")).bottom();
    for (const auto& [name, title] : sections) {
        EXPECT_EQ(titleOf(name), QString::fromUtf8(title));
        EXPECT_EQ(spoken(&itemIn(item(name), "sectionTitle")).role, QAccessible::Heading);
        EXPECT_GT(place(item(name)).top(), bottom) << name;
        bottom = place(item(name)).bottom();
    }
}

TEST_F(SetupViewTest, HasAHeader) {
    start();
    show();
    EXPECT_EQ(spoken(&item("logo")), (Spoken{QAccessible::Graphic, QStringLiteral("Brimwatch?")}));
    EXPECT_EQ(item("logo").height(), 30);
    EXPECT_EQ(text("promise"),
              "AI 서비스 **약관**을 지키고, **AI 로그인 정보**는 수집하지 않아요.");
    EXPECT_EQ(item("promise").property("textFormat").toInt(), Qt::MarkdownText);
    EXPECT_EQ(item("promise").property("font").value<QFont>().pixelSize(), 12);
    EXPECT_EQ(colorOf(item("promise")), colors::secondaryLabel.light);
    EXPECT_EQ(spoken(&item("promise")).name,
              QStringLiteral("AI 서비스 약관을 지키고, AI 로그인 정보는 수집하지 않아요."));
}

constexpr std::pair<const char*, const char*> wholeHelpTexts[] = {
    {"claude",
     "이 맥의 Claude Code 계정을 찾아 연결해요. 한 번 연결하면 나중에 생긴 계정도 알아서 "
     "연결해요. 다른 곳에 둔 계정은 '계정 추가'에서 Claude Code 설정 폴더를 고르면 돼요. "
     "연결한 계정의 Claude Code가 한도를 전달하면 새 사용량이 와요. Claude 데스크톱 앱이나 "
     "Claude Code를 켜 두기만 하면 갱신되지 않을 수 있어요. 응답 후에도 그대로면 해당 "
     "Claude Code 세션을 다시 열어 주세요. 새 값을 받기 전에는 마지막 기록을 표시해요. "
     "5시간·주간 한도는 Claude Code 상태줄에서 받고, 로그인 정보는 읽지 않아요. 쓰던 "
     "상태줄은 그대로예요."},
    {"codex",
     "이 맥의 기본 계정과 ~/.codex-* 계정을 찾아 각각 5분마다 한도를 물어요. 다른 곳에 둔 "
     "계정은 '계정 추가'에서 Codex 설정 폴더를 고르면 돼요. 로그인은 Codex에서 하고, 이 "
     "앱은 로그인 정보를 읽지 않아요. 해제해도 Codex 로그인은 유지돼요."},
    {"menuCardOrder",
     "줄을 끌어서 메뉴 창 카드의 순서를 바꿔요. 메뉴 창에서 카드를 오른쪽 클릭해 '순서 "
     "바꾸기'를 눌러도 여기로 와요. 새로 연결한 계정은 맨 아래에 붙어요. iPhone 홈 카드 "
     "순서와는 따로 정해요."},
    {"iPhone",
     "받은 한도를 암호화해서 iPhone 앱으로 보내요. 맥과 iPhone이 같은 Apple 계정이고, 둘 다 "
     "암호 동기화가 켜져 있어야 해요. 끄면 보낸 값을 지워요."},
    {"android",
     "'QR 보기'를 누르고 안드로이드 앱에서 그 QR을 찍으면 연결돼요. 받은 한도를 암호화해서 "
     "안드로이드 앱으로 보내요. QR이 있으면 누구나 한도를 볼 수 있지만 로그인 정보는 볼 수 "
     "없어요. iPhone으로 보내기는 그대로예요."},
    {"general",
     "한도 표시는 메뉴 창과 메뉴 막대, Claude Code 상태줄의 숫자를 남은 양이나 사용량으로 "
     "보여 줘요. 자동으로 업데이트를 켜 두면 새 버전을 받아 설치하고 앱을 다시 켜요."}};

TEST_F(SetupViewTest, ExplainsEachSectionInABubble) {
    showThreeCards();
    for (const auto& [section, help] : wholeHelpTexts) {
        QQuickItem& button = itemIn(item(section), "help");
        EXPECT_EQ(spoken(&button), (Spoken{QAccessible::Button, titleOf(section) + " 도움말"}));
        EXPECT_EQ(button.property("symbol").toString(), "questionmark.circle");
        press(button);
        ASSERT_TRUE(button.property("showsHelp").toBool()) << section;
        EXPECT_EQ(text("helpText"), help) << section;
        pressKey(Qt::Key_Escape);
        EXPECT_TRUE(eventuallyInLoop([&button] { return !button.property("showsHelp").toBool(); }));
    }
    EXPECT_FALSE(itemIn(item("removal"), "help").isVisible());
}

TEST_F(SetupViewTest, ABubbleGoesWithAPressBesideIt) {
    start();
    show();
    QQuickItem& help = itemIn(item("claude"), "help");
    press(help);
    ASSERT_TRUE(help.property("showsHelp").toBool());
    press("settings.removeEverything");
    EXPECT_TRUE(eventuallyInLoop([&help] { return !help.property("showsHelp").toBool(); }));
    EXPECT_FALSE(isSeen("removalDialog"));
}

// --- Claude Code ---

TEST_F(SetupViewTest, ConnectsAllAccountsOfClaudeCode) {
    const std::string folder = makeClaudeFolder(".claude-a");
    start();
    show();
    EXPECT_EQ(spoken(&item("claude.connectAll")),
              (Spoken{QAccessible::Button, QStringLiteral("Claude Code 연결")}));
    press("claude.connectAll");
    EXPECT_TRUE(isRegistered(folder));
    EXPECT_EQ(text("claude.footer"),
              "Claude는 연결한 계정의 Claude Code에서 응답을 받으면 갱신돼요.");
}

TEST_F(SetupViewTest, ConnectsAndDisconnectsAnAccountOfClaudeCode) {
    const std::string folder = makeClaudeFolder(".claude-a");
    start();
    show();
    QQuickItem& row = item("subscription.claude-a");
    EXPECT_EQ(spoken(&row), (Spoken{QAccessible::Grouping, QStringLiteral("a")}));
    EXPECT_FALSE(itemIn(row, "statusSymbol").isVisible());
    EXPECT_EQ(text("claude.connection.a"), "연결");
    EXPECT_EQ(spoken(&item("claude.connection.a")).name, "a 연결");
    press("claude.connection.a");
    EXPECT_TRUE(isRegistered(folder));
    EXPECT_TRUE(itemIn(row, "statusSymbol").isVisible());
    EXPECT_EQ(itemIn(row, "statusSymbol").property("name").toString(), "checkmark.circle.fill");
    EXPECT_EQ(colorOf(itemIn(row, "statusSymbol")), colors::levelComfortable.light);
    EXPECT_FALSE(itemIn(row, "status").isVisible());
    EXPECT_EQ(text("claude.connection.a"), "해제");
    EXPECT_EQ(spoken(&item("claude.connection.a")).name, "a 연결 해제");
    press("claude.connection.a");
    EXPECT_FALSE(isRegistered(folder));
}

TEST_F(SetupViewTest, ShowsHowAnAccountOfClaudeCodeStands) {
    writeStatusLine(makeClaudeFolder(".claude-a"), "'/gone/bin/brimwatch' --statusline");
    writeStatusLine(makeClaudeFolder(".claude-b"), "python3 ~/.brimwatch/brimwatch.py");
    makeRegisteredFolder(".claude-c");
    defaults_.put("claudeAutoConnect", R"({"enabled":false,"declined":[]})");
    start();
    model().setClaudeUsagePaused(true);
    show();
    QQuickItem& broken = item("subscription.claude-a");
    EXPECT_EQ(textOf(itemIn(broken, "status")), "연결 복구 필요");
    EXPECT_EQ(colorOf(itemIn(broken, "status")), colors::levelWarning.light);
    EXPECT_EQ(colorOf(itemIn(broken, "statusSymbol")), colors::levelWarning.light);
    QQuickItem& old = item("subscription.claude-b");
    EXPECT_EQ(textOf(itemIn(old, "status")), "예전 도우미로 연결됨");
    EXPECT_FALSE(itemIn(old, "statusSymbol").isVisible());
    QQuickItem& paused = item("subscription.claude-c");
    EXPECT_EQ(textOf(itemIn(paused, "status")), "수집 중지됨");
    EXPECT_EQ(itemIn(paused, "statusSymbol").property("name").toString(), "pause.circle");
    EXPECT_EQ(colorOf(itemIn(paused, "status")), colors::secondaryLabel.light);
}

TEST_F(SetupViewTest, RevealsTheFolderOfAnAccount) {
    showThreeCards();
    QQuickItem& location = itemIn(item("subscription.claude-b"), "location");
    EXPECT_EQ(spoken(&location), (Spoken{QAccessible::Button, QStringLiteral("b 폴더")}));
    EXPECT_EQ(location.property("hint").toString(), "Finder에서 보여 줘요");
    EXPECT_EQ(location.property("symbol").toString(), "folder");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&location)->text(QAccessible::Description),
              "Finder에서 보여 줘요");
    press(location);
    QQuickItem& codex = itemIn(item("subscription.codex-c"), "location");
    EXPECT_EQ(spoken(&codex).name, "Codex c 폴더");
    press(codex);
    EXPECT_THAT(fileManager_.revealed, ElementsAre(path(".claude-b"), path(".codex-c")));
}

// --- Codex ---

TEST_F(SetupViewTest, SwitchesCodex) {
    showThreeCards();
    QQuickItem& shown = item("codex.enabled");
    EXPECT_EQ(spoken(&shown),
              (Spoken{QAccessible::CheckBox, QStringLiteral("5분마다 Codex 한도 받기")}));
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(&shown)->state().checked);
    press(shown);
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_FALSE(QAccessible::queryAccessibleInterface(&shown)->state().checked);
    shown.forceActiveFocus();
    pressKey(Qt::Key_Space);
    EXPECT_TRUE(model().codexEnabled());
    pressKey(Qt::Key_Return);
    EXPECT_FALSE(model().codexEnabled());
}

TEST_F(SetupViewTest, ASwitchShowsWhatIsSoAndNotWhatWasPressed) {
    startAndBeginRemoval();
    show();
    ASSERT_FALSE(model().codexEnabled());
    press("codex.enabled");
    EXPECT_FALSE(item("codex.enabled").property("isOn").toBool());
    settle();
}

TEST_F(SetupViewTest, ConnectsCodexAndAsksIt) {
    showThreeCards();
    EXPECT_EQ(spoken(&item("codex.connectAll")),
              (Spoken{QAccessible::Button, QStringLiteral("Codex 연결")}));
    model().setCodexAccount(codexAccount("c"), false);
    press("codex.connectAll");
    EXPECT_TRUE(model().isCodexAccountOn(codexAccount("c")));
    settle();
    while (codex_.isAsking())
        answer(10);
    codex_.forgetQuestions();
    EXPECT_EQ(text("codex.receiveNow"), "지금 새로 받기");
    press("codex.receiveNow");
    EXPECT_TRUE(codex_.isAsking());
}

TEST_F(SetupViewTest, SwitchesAnAccountOfCodex) {
    showThreeCards();
    QQuickItem& row = item("subscription.codex-c");
    EXPECT_EQ(spoken(&row), (Spoken{QAccessible::Grouping, QStringLiteral("Codex c")}));
    EXPECT_EQ(spoken(&item("codex.connection.c")),
              (Spoken{QAccessible::CheckBox, QStringLiteral("Codex c")}));
    press("codex.connection.c");
    EXPECT_FALSE(model().isCodexAccountOn(codexAccount("c")));
    EXPECT_EQ(textOf(itemIn(row, "status")), "수집 중지됨");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&row)->text(QAccessible::Description),
              "수집 중지됨");
    press("codex.connection.c");
    EXPECT_TRUE(model().isCodexAccountOn(codexAccount("c")));
}

TEST_F(SetupViewTest, TellsThatCodexIsNotThere) {
    codex_.installed.reset();
    showThreeCards();
    EXPECT_FALSE(isSeen("codex.status"));
    press("codex.receiveNow");
    EXPECT_EQ(text("codex.status"),
              "codex를 못 찾았어요. ChatGPT 앱이나 codex CLI를 설치해 주세요.");
}

// --- Phones ---

TEST_F(SetupViewTest, SwitchesIPhonesAndTellsHowItStands) {
    startWithPhones();
    show();
    EXPECT_EQ(spoken(&item("iPhone.sends")),
              (Spoken{QAccessible::CheckBox, QStringLiteral("iPhone으로 보내기")}));
    press("iPhone.sends");
    settleAll();
    EXPECT_FALSE(model().cloud().isEnabled());
    EXPECT_EQ(textOf(itemIn(item("iPhone.status"), "channelStatus")), "iPhone으로 보내지 않아요.");
    EXPECT_FALSE(itemIn(item("iPhone.status"), "signIn").isVisible());
}

TEST_F(SetupViewTest, OffersToSignInWhereTheAccountIsMissing) {
    database_.account = CloudAccountStatus::noAccount;
    keys_.values["net.quillmoor.brimwatch.sync/phone-key-v1"] = test::keyFilledWith('p').bytes();
    makeRegisteredFolder(".claude-a");
    writeLimits("claude-a", 10, 20);
    startWithPhones();
    settleAll();
    show();
    for (const char* channel : {"iPhone.status", "android.status"}) {
        QQuickItem& status = itemIn(item(channel), "channelStatus");
        EXPECT_EQ(textOf(status), "시스템 설정에서 Apple 계정에 로그인해 주세요.") << channel;
        EXPECT_EQ(colorOf(status), colors::levelWarning.light) << channel;
        QQuickItem& signIn = itemIn(item(channel), "signIn");
        EXPECT_EQ(spoken(&signIn),
                  (Spoken{QAccessible::Button, QStringLiteral("Apple 계정으로 로그인")}));
        press(signIn);
    }
    EXPECT_THAT(calls_, ElementsAre("signIn", "signIn"));
}

TEST_F(SetupViewTest, ShowsTheLinkToAnAndroidPhone) {
    start();
    show();
    EXPECT_EQ(spoken(&item("phoneLink.show")),
              (Spoken{QAccessible::Button, QStringLiteral("안드로이드 연결 QR 보기")}));
    press("phoneLink.show");
    EXPECT_THAT(calls_, ElementsAre("showPhoneLink"));
    EXPECT_EQ(textOf(itemIn(item("android.status"), "channelStatus")),
              "개발용 빌드라 안드로이드로 보내지 않아요.");
    EXPECT_EQ(colorOf(itemIn(item("android.status"), "channelStatus")),
              colors::secondaryLabel.light);
}

// --- General ---

struct Picker {
    const char* identifier;
    const char* title;
    QStringList titles;
};

TEST_F(SetupViewTest, OffersItsChoices) {
    showWithServices();
    const Picker pickers[] = {
        {"settings.appTheme", "테마", {"시스템 설정", "라이트", "다크"}},
        {"settings.usageDisplay", "한도 표시", {"남은 양", "사용량"}},
        {"settings.recentUsage",
         "최근 소모량",
         {"표시 안 함", "최근 1시간", "최근 2시간", "최근 4시간", "최근 6시간"}}};
    for (const Picker& picker : pickers) {
        QQuickItem& box = item(picker.identifier);
        EXPECT_EQ(spoken(&box), (Spoken{QAccessible::ComboBox, QString::fromUtf8(picker.title)}));
        EXPECT_EQ(box.property("model").toStringList(), picker.titles);
        EXPECT_EQ(textOf(itemIn(box, "chosenTitle")), picker.titles.first());
        box.forceActiveFocus();
        pressKey(Qt::Key_Down);
        EXPECT_EQ(textOf(itemIn(box, "chosenTitle")), picker.titles[1]);
    }
    EXPECT_EQ(model().appTheme(), AppTheme::light);
    EXPECT_EQ(model().usageDisplay(), UsageDisplay::used);
    EXPECT_EQ(model().recentUsagePeriod(), RecentUsagePeriod::oneHour);
}

TEST_F(SetupViewTest, SpeaksTheLanguageThatIsChosen) {
    makeRegisteredFolder(".claude-a");
    makeCodexFolder(".codex-c");
    start();
    model().setAppTheme(AppTheme::dark);
    const LanguageTranslator translator(model());
    show();
    QQuickItem& box = item("settings.language");
    EXPECT_EQ(spoken(&box), (Spoken{QAccessible::ComboBox, QStringLiteral("언어 · Language")}));
    box.forceActiveFocus();
    pressKey(Qt::Key_Down);
    EXPECT_EQ(model().language().code, "en");
    QCoreApplication::processEvents();
    EXPECT_EQ(textOf(itemIn(box, "chosenTitle")), "English");
    EXPECT_EQ(spoken(&box).name, "언어 · Language");
    EXPECT_EQ(titleOf("general"), "General");
    EXPECT_EQ(textOf(itemIn(item("settings.appTheme"), "chosenTitle")), "Dark");
    EXPECT_EQ(textOf(itemIn(item("subscription.codex-c"), "status")), "Waiting for limits");
    for (const std::string& korean : koreanTexts(root()))
        EXPECT_EQ(korean, "언어 · Language");
    pressKey(Qt::Key_Up);
    QCoreApplication::processEvents();
    EXPECT_EQ(titleOf("general"), "일반");
    EXPECT_EQ(textOf(itemIn(item("settings.appTheme"), "chosenTitle")), "다크");
    EXPECT_EQ(textOf(itemIn(item("subscription.codex-c"), "status")), "한도를 기다리는 중");
}

TEST_F(SetupViewTest, AChoiceIsMadeInItsList) {
    showWithServices();
    QQuickItem& box = item("settings.appTheme");
    press(box);
    auto* popup = box.property("popup").value<QObject*>();
    ASSERT_TRUE(eventuallyInLoop([popup] { return popup->property("opened").toBool(); }));
    QQuickItem* list = popup->property("contentItem").value<QQuickItem*>();
    QQuickItem* dark = nullptr;
    ASSERT_TRUE(eventuallyInLoop([&] {
        QMetaObject::invokeMethod(list, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, dark),
                                  Q_ARG(int, 2));
        return dark != nullptr;
    }));
    EXPECT_EQ(spoken(dark), (Spoken{QAccessible::ListItem, QStringLiteral("다크")}));
    press(*dark);
    EXPECT_EQ(model().appTheme(), AppTheme::dark);
    model().setAppTheme(AppTheme::light);
    EXPECT_EQ(textOf(itemIn(box, "chosenTitle")), "라이트");
}

TEST_F(SetupViewTest, OpensTheProgramAtLogin) {
    showWithServices();
    EXPECT_EQ(spoken(&item("settings.launchAtLogin")).name, "로그인할 때 열기");
    press("settings.launchAtLogin");
    EXPECT_TRUE(services_.login.enabled);
    EXPECT_TRUE(item("settings.launchAtLogin").property("isOn").toBool());
}

TEST_F(SetupViewTest, TheSwitchFlipsBackIfTheSessionRefuses) {
    showWithServices();
    services_.login.error = std::make_error_code(std::errc::permission_denied);
    press("settings.launchAtLogin");
    EXPECT_FALSE(item("settings.launchAtLogin").property("isOn").toBool());
    EXPECT_TRUE(isSeen("failure"));
}

TEST_F(SetupViewTest, OffersUpdates) {
    start();
    show();
    EXPECT_EQ(text("updates.automatic"), "자동으로 업데이트");
    press("updates.automatic");
    EXPECT_FALSE(updates_.automatic);
    EXPECT_FALSE(item("updates.automatic").property("isOn").toBool());
    EXPECT_EQ(text("updates.check"), "지금 확인");
    press("updates.check");
    EXPECT_THAT(updates_.calls, ElementsAre("checkNow"));
    for (const char* name : {"updates.status", "updates.install", "updates.skip", "updates.page",
                             "updates.unavailable"})
        EXPECT_FALSE(isSeen(name)) << name;
}

TEST_F(SetupViewTest, AnswersACheckForUpdates) {
    start();
    show();
    updates_.status = QStringLiteral("새 버전 2 설치할 수 있어요.");
    updates_.installable = updates_.skippable = updates_.page = true;
    emit updates_.statusChanged();
    QCoreApplication::processEvents();
    EXPECT_EQ(text("updates.status"), updates_.status);
    EXPECT_EQ(colorOf(item("updates.status")), colors::secondaryLabel.light);
    EXPECT_EQ(text("updates.install"), "설치");
    EXPECT_EQ(text("updates.skip"), "이 버전 건너뛰기");
    EXPECT_EQ(text("updates.page"), "바뀐 점 보기");
    layOut(root());
    for (const char* name : {"updates.install", "updates.skip", "updates.page"})
        press(name);
    EXPECT_THAT(updates_.calls, ElementsAre("install", "skip", "showPage"));
    updates_.attention = true;
    emit updates_.statusChanged();
    EXPECT_EQ(colorOf(item("updates.status")), colors::levelWarning.light);
}

TEST_F(SetupViewTest, UpdatesThatHaveSomethingToSayComeIntoSight) {
    updates_.status = QStringLiteral("최신 버전이에요.");
    start();
    show(1, 500);
    ASSERT_GT(place(item("updates")).top(), window().height());
    updates_.setRevealed(true);
    EXPECT_EQ(item("scroll").property("contentY").toDouble(), 0);
    EXPECT_EQ(helperOf("revealUpdates").property("interval").toInt(), 300);
    EXPECT_TRUE(eventuallyInLoop([this] { return !updates_.isRevealed(); }));
    EXPECT_TRUE(
        eventuallyInLoop([this] { return !helperOf("glide").property("running").toBool(); }));
    EXPECT_LE(place(item("updates")).bottom(), window().height());
    const double shownFrom = item("scroll").property("contentY").toDouble();
    updates_.setRevealed(true);
    EXPECT_TRUE(eventuallyInLoop([this] { return !updates_.isRevealed(); }));
    EXPECT_EQ(helperOf("glide").property("to").toDouble(), shownFrom)
        << "they are in sight already";
}

TEST_F(SetupViewTest, NothingScrollsToUpdatesWhereThereAreNone) {
    updates_.available = false;
    start();
    show(1, 500);
    updates_.setRevealed(true);
    EXPECT_TRUE(eventuallyInLoop([this] { return !updates_.isRevealed(); }));
    EXPECT_FALSE(helperOf("glide").property("running").toBool());
}

TEST_F(SetupViewTest, OvershootsOnlyWhereItScrolls) {
    constexpr int stops = 0;
    constexpr int overshoots = 3;
    start();
    show();
    EXPECT_EQ(item("scroll").property("boundsBehavior").toInt(), stops);
    window_.reset();
    show(1, 500);
    EXPECT_EQ(item("scroll").property("boundsBehavior").toInt(), overshoots);
}

TEST_F(SetupViewTest, HidesUpdatesWhereThereAreNone) {
    updates_.available = false;
    updates_.status = QStringLiteral("최신 버전이에요.");
    start();
    show();
    for (const char* name :
         {"updates.automatic", "updates.check", "updates.status", "updates.unavailable"})
        EXPECT_FALSE(isSeen(name)) << name;
    window_.reset();
    updates_.unavailability = QStringLiteral("이 설치는 시스템의 패키지 관리자가 업데이트해요.");
    show();
    EXPECT_EQ(text("updates.unavailable"), updates_.unavailability);
    EXPECT_FALSE(isSeen("updates.automatic"));
}

// --- Accessibility ---

TEST_F(SetupViewTest, APressOfAnAccessibilityClientCounts) {
    showThreeCards();
    const auto act = [this](const char* name) {
        QAccessibleActionInterface* actions =
            QAccessible::queryAccessibleInterface(&item(name))->actionInterface();
        ASSERT_THAT(actions->actionNames(), Contains(QAccessibleActionInterface::pressAction()));
        actions->doAction(QAccessibleActionInterface::pressAction());
        QCoreApplication::processEvents();
    };
    act("phoneLink.show");
    EXPECT_THAT(calls_, ElementsAre("showPhoneLink"));
    act("codex.enabled");
    EXPECT_FALSE(model().codexEnabled());
    act("settings.appTheme");
    EXPECT_TRUE(item("settings.appTheme")
                    .property("popup")
                    .value<QObject*>()
                    ->property("visible")
                    .toBool());
}

TEST_F(SetupViewTest, EveryControlCanBeReachedByTheKeyboard) {
    showThreeCards();
    std::vector<std::string> reached;
    for (int step = 0; step < 80; ++step) {
        pressKey(Qt::Key_Tab);
        if (const QQuickItem* focused = window().activeFocusItem())
            reached.push_back(focused->objectName().toStdString());
    }
    for (const char* name : {"claude.connectAll",
                             "claude.addAccount",
                             "location",
                             "usageName.edit.claude-a",
                             "claude.connection.a",
                             "codex.enabled",
                             "codex.connectAll",
                             "codex.addAccount",
                             "codex.receiveNow",
                             "usageName.edit.codex-c",
                             "codex.connection.c",
                             "cardOrder.row",
                             "cardOrder.reset",
                             "iPhone.sends",
                             "phoneLink.show",
                             "settings.appTheme",
                             "settings.usageDisplay",
                             "settings.recentUsage",
                             "settings.language",
                             "settings.launchAtLogin",
                             "updates.automatic",
                             "updates.check",
                             "settings.removeEverything",
                             "help"})
        EXPECT_THAT(reached, Contains(name));
}

TEST_F(SetupViewTest, WhatTheKeyboardActsOnIsKeptInSight) {
    startWithThreeCards();
    show(1, 700);
    item("settings.removeEverything").forceActiveFocus();
    EXPECT_LE(place(item("settings.removeEverything")).bottom(), window().height());
    item("claude.connectAll").forceActiveFocus();
    EXPECT_GE(place(item("claude.connectAll")).top(), 0);
}

}  // namespace
}  // namespace brimwatch
