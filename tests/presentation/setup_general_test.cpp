#include <gmock/gmock.h>

#include <QSignalSpy>

#include "setup_fixture.h"

namespace brimwatch {
namespace {

using Titles = QStringList;

class SetupGeneral : public test::SetupFixture {
  protected:
    GeneralSection& show() {
        startWithServices();
        return *makeShownSettings().general();
    }
};

TEST_F(SetupGeneral, OffersTheThemes) {
    GeneralSection& general = show();
    EXPECT_EQ(general.themes(), (Titles{"시스템 설정", "라이트", "다크"}));
    QSignalSpy spy(&general, &GeneralSection::themeChanged);
    EXPECT_EQ(general.theme(), 0);
    general.setTheme(2);
    EXPECT_EQ(model().appTheme(), AppTheme::dark);
    EXPECT_EQ(general.theme(), 2);
    general.setTheme(1);
    EXPECT_EQ(model().appTheme(), AppTheme::light);
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SetupGeneral, OffersWhatFiguresSay) {
    GeneralSection& general = show();
    EXPECT_EQ(general.displays(), (Titles{"남은 양", "사용량"}));
    QSignalSpy spy(&general, &GeneralSection::displayChanged);
    EXPECT_EQ(general.display(), 0);
    general.setDisplay(1);
    EXPECT_EQ(model().usageDisplay(), UsageDisplay::used);
    EXPECT_EQ(general.display(), 1);
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(SetupGeneral, OffersThePeriodsOfRecentUsage) {
    GeneralSection& general = show();
    EXPECT_EQ(general.periods(),
              (Titles{"표시 안 함", "최근 1시간", "최근 2시간", "최근 4시간", "최근 6시간"}));
    QSignalSpy spy(&general, &GeneralSection::periodChanged);
    EXPECT_EQ(general.period(), 0);
    const RecentUsagePeriod periods[] = {RecentUsagePeriod::off, RecentUsagePeriod::oneHour,
                                         RecentUsagePeriod::twoHours, RecentUsagePeriod::fourHours,
                                         RecentUsagePeriod::sixHours};
    for (int index = 4; index >= 0; --index) {
        general.setPeriod(index);
        EXPECT_EQ(model().recentUsagePeriod(), periods[index]);
        EXPECT_EQ(general.period(), index);
    }
    EXPECT_EQ(spy.count(), 5);
}

TEST_F(SetupGeneral, AChoiceThatIsNoneChangesNothing) {
    GeneralSection& general = show();
    general.setTheme(1);
    general.setDisplay(1);
    general.setPeriod(1);
    for (const int index : {-1, 3, 5, 99}) {
        general.setTheme(index == 3 || index > 4 || index < 0 ? index : 99);
        general.setDisplay(index);
        general.setPeriod(index == 3 ? 5 : index);
    }
    general.setDisplay(2);
    EXPECT_EQ(model().appTheme(), AppTheme::light);
    EXPECT_EQ(model().usageDisplay(), UsageDisplay::used);
    EXPECT_EQ(model().recentUsagePeriod(), RecentUsagePeriod::oneHour);
}

TEST_F(SetupGeneral, OffersTheLanguagesInTheirOwnWords) {
    GeneralSection& general = show();
    EXPECT_EQ(general.languages(), (Titles{"한국어", "English"}));
    QSignalSpy spy(&general, &GeneralSection::languageChanged);
    EXPECT_EQ(general.language(), 0);
    general.setLanguage(1);
    EXPECT_EQ(model().language().code, "en");
    EXPECT_EQ(general.language(), 1);
    general.setLanguage(2);
    general.setLanguage(-1);
    EXPECT_EQ(general.language(), 1);
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(SetupGeneral, OpensTheProgramAtLogin) {
    GeneralSection& general = show();
    QSignalSpy spy(&general, &GeneralSection::launchesAtLoginChanged);
    general.setLaunchesAtLogin(true);
    EXPECT_TRUE(services_.login.enabled);
    EXPECT_TRUE(general.launchesAtLogin());
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(SetupGeneral, TellsWhyTheProgramCannotBeOpenedAtLogin) {
    GeneralSection& general = show();
    services_.login.error = std::make_error_code(std::errc::permission_denied);
    general.setLaunchesAtLogin(true);
    QCoreApplication::processEvents();
    EXPECT_FALSE(general.launchesAtLogin());
    EXPECT_TRUE(settings_->failure().startsWith("로그인할 때 열기를 바꾸지 못했어요: "));
}

TEST_F(SetupGeneral, ExplainsItselfByWhetherThereAreUpdates) {
    EXPECT_EQ(show().help(),
              "한도 표시는 메뉴 창과 메뉴 막대, Claude Code 상태줄의 숫자를 남은 양이나 사용량으로 "
              "보여 줘요. 자동으로 업데이트를 켜 두면 새 버전을 받아 설치하고 앱을 다시 켜요.");
    updates_.available = false;
    EXPECT_EQ(makeShownSettings().general()->help(),
              "한도 표시는 메뉴 창과 메뉴 막대, Claude Code 상태줄의 숫자를 남은 양이나 사용량으로 "
              "보여 줘요. 개발용 빌드라 업데이트하지 않아요.");
}

TEST_F(SetupGeneral, GivesTheUpdatesToViews) {
    EXPECT_EQ(show().updates(), &updates_);
}

}  // namespace
}  // namespace brimwatch
