#include "presentation/setup/general_section.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "presentation/translated.h"

namespace brimwatch {
namespace {

constexpr std::array allDisplays = {UsageDisplay::remaining, UsageDisplay::used};
constexpr std::array allPeriods = {RecentUsagePeriod::off, RecentUsagePeriod::oneHour,
                                   RecentUsagePeriod::twoHours, RecentUsagePeriod::fourHours,
                                   RecentUsagePeriod::sixHours};

template <class Choices>
QStringList titles(const Choices& choices) {
    QStringList titles;
    std::transform(choices.begin(), choices.end(), std::back_inserter(titles),
                   [](auto choice) { return translated(label(choice)); });
    return titles;
}

template <class Choices, class Choice>
int indexOf(const Choices& choices, Choice choice) {
    return static_cast<int>(std::find(choices.begin(), choices.end(), choice) - choices.begin());
}

// Whether there is a choice of that number.
template <class Choices>
bool holds(const Choices& choices, int index) {
    return index >= 0 && index < static_cast<int>(choices.size());
}

}  // namespace

GeneralSection::GeneralSection(HelperModel& model, SetupUpdates& updates)
    : model_(model), updates_(updates) {
    connect(&model, &HelperModel::appThemeChanged, this, &GeneralSection::themeChanged);
    connect(&model, &HelperModel::usageDisplayChanged, this, &GeneralSection::displayChanged);
    connect(&model, &HelperModel::recentUsagePeriodChanged, this, &GeneralSection::periodChanged);
    connect(&model, &HelperModel::languageChanged, this, &GeneralSection::languageChanged);
    connect(&model, &HelperModel::launchAtLoginChanged, this,
            &GeneralSection::launchesAtLoginChanged);
}

QString GeneralSection::help() const {
    return updates_.isAvailable()
               ? translated(
                     "한도 표시는 메뉴 창과 메뉴 막대, Claude Code 상태줄의 숫자를 남은 양이나 "
                     "사용량으로 보여 줘요. 자동으로 업데이트를 켜 두면 새 버전을 받아 설치하고 "
                     "앱을 다시 켜요.")
               : translated(
                     "한도 표시는 메뉴 창과 메뉴 막대, Claude Code 상태줄의 숫자를 남은 양이나 "
                     "사용량으로 보여 줘요. 개발용 빌드라 업데이트하지 않아요.");
}

QStringList GeneralSection::themes() {
    return titles(allAppThemes);
}

int GeneralSection::theme() const {
    return indexOf(allAppThemes, model_.appTheme());
}

void GeneralSection::setTheme(int index) {
    if (holds(allAppThemes, index)) model_.setAppTheme(allAppThemes[static_cast<size_t>(index)]);
}

QStringList GeneralSection::displays() {
    return titles(allDisplays);
}

int GeneralSection::display() const {
    return indexOf(allDisplays, model_.usageDisplay());
}

void GeneralSection::setDisplay(int index) {
    if (holds(allDisplays, index)) model_.setUsageDisplay(allDisplays[static_cast<size_t>(index)]);
}

QStringList GeneralSection::periods() {
    return titles(allPeriods);
}

int GeneralSection::period() const {
    return indexOf(allPeriods, model_.recentUsagePeriod());
}

void GeneralSection::setPeriod(int index) {
    if (holds(allPeriods, index)) {
        model_.setRecentUsagePeriod(allPeriods[static_cast<size_t>(index)]);
    }
}

QStringList GeneralSection::languages() {
    QStringList names;
    for (const Language& language : allLanguages())
        names.append(QString::fromUtf8(language.name.data(), std::ssize(language.name)));
    return names;
}

int GeneralSection::language() const {
    return static_cast<int>(&model_.language() - allLanguages().data());
}

void GeneralSection::setLanguage(int index) {
    if (holds(allLanguages(), index))
        model_.setLanguage(allLanguages()[static_cast<size_t>(index)]);
}

void GeneralSection::setLaunchesAtLogin(bool launches) {
    model_.setLaunchAtLogin(launches);
}

}  // namespace brimwatch
