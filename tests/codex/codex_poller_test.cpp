#include "codex/codex_poller.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstdint>

#include "harness/random.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

using Reading = CodexPoller::Reading;
using Windows = LimitsFile::Windows;

JsonObject parsed(std::string_view text) {
    return parseJsonObject(text).value();
}

// A result whose limits block has these members.
JsonObject withBlock(const std::string& members) {
    return parsed(R"({"rateLimits":{)" + members + "}}");
}

std::string window(const std::string& usedPercent, const std::string& minutes,
                   const std::string& resetsAt) {
    return R"({"usedPercent":)" + usedPercent + R"(,"windowDurationMins":)" + minutes +
           R"(,"resetsAt":)" + resetsAt + "}";
}

Windows windowsOf(const std::string& primary, const std::string& secondary) {
    return CodexPoller::windows(
        withBlock(R"("primary":)" + primary + R"(,"secondary":)" + secondary));
}

// Of one window of five hours.
std::optional<double> percentage(const std::string& usedPercent) {
    const Windows windows = windowsOf(window(usedPercent, "300", "1"), "null");
    const auto found = windows.find("five_hour");
    return found != windows.end() ? std::optional(found->second.usedPercentage) : std::nullopt;
}

std::optional<std::int64_t> resetTime(const std::string& resetsAt) {
    return windowsOf(window("50", "300", resetsAt), "null").at("five_hour").resetsAt;
}

CodexCredits creditsOf(const std::string& members) {
    return CodexPoller::credits(withBlock(R"("credits":{)" + members + "}")).value();
}

std::string balance(std::string_view text) {
    const std::optional<Decimal> balance = CodexPoller::parseBalance(text);
    return balance ? balance->digits() : "none";
}

TEST(CodexLimitsBlock, IsTheOneOfCodexWhereLimitsComeById) {
    const JsonObject result = parsed(
        R"({"rateLimits":{"planType":"a"},"rateLimitsByLimitId":{"codex":{"planType":"b"}}})");
    EXPECT_EQ(CodexPoller::limitsBlock(result), parsed(R"({"planType":"b"})"));
}

TEST(CodexLimitsBlock, IsNotMergedWithTheOther) {
    const JsonObject result =
        parsed(R"({"rateLimitsByLimitId":{"codex":{}},"rateLimits":{"planType":"plus","credits":{},
                   "primary":)" +
               window("1", "300", "2") + "}}");
    EXPECT_EQ(Reading::fromResult(result), Reading());
}

TEST(CodexLimitsBlock, IsTheOtherWhereTheFirstIsNotThere) {
    for (const char* byLimit : {"{}", "null", "[]", "7", R"({"codex":null})", R"({"codex":[]})",
                                R"({"codex":"x"})", R"({"another":{"planType":"b"}})"}) {
        const JsonObject result =
            parsed(R"({"rateLimits":{"planType":"a"},"rateLimitsByLimitId":)" +
                   std::string(byLimit) + "}");
        EXPECT_EQ(CodexPoller::limitsBlock(result), parsed(R"({"planType":"a"})")) << byLimit;
    }
}

TEST(CodexLimitsBlock, IsEmptyWhereThereIsNone) {
    for (const char* result :
         {"{}", R"({"rateLimits":null})", R"({"rateLimits":[1]})", R"({"rateLimits":"x"})"}) {
        EXPECT_TRUE(CodexPoller::limitsBlock(parsed(result)).empty()) << result;
    }
}

TEST(CodexWindows, AreToldByTheirLengthAndNotByTheirPlace) {
    const std::string fiveHours = window("37", "300", "100");
    const std::string sevenDays = window("62", "10080", "200");
    const Windows expected = {{"five_hour", {37, 100}}, {"seven_day", {62, 200}}};
    EXPECT_EQ(windowsOf(fiveHours, sevenDays), expected);
    EXPECT_EQ(windowsOf(sevenDays, fiveHours), expected);
}

TEST(CodexWindows, OfOneLengthAreTheFirstAlone) {
    EXPECT_EQ(windowsOf(window("1", "300", "10"), window("2", "300", "20")),
              (Windows{{"five_hour", {1, 10}}}));
    EXPECT_EQ(windowsOf(window("1", "10080", "10"), window("2", "10080", "20")),
              (Windows{{"seven_day", {1, 10}}}));
}

TEST(CodexWindows, OfOneLengthAreTheFirstThatIsOne) {
    EXPECT_EQ(windowsOf(window("null", "300", "10"), window("2", "300", "20")),
              (Windows{{"five_hour", {2, 20}}}));
}

TEST(CodexWindows, OfAnotherLengthAreIgnored) {
    for (const char* minutes : {"60", "299", "301", "0", "-300", "10079", "10081", "1e300",
                                "-1e300", "99999999999999999999", "9223372036854776108"}) {
        EXPECT_EQ(windowsOf(window("1", minutes, "2"), window("3", "10080", "4")),
                  (Windows{{"seven_day", {3, 4}}}))
            << minutes;
    }
}

TEST(CodexWindows, HaveALengthWhoseFractionIsDropped) {
    for (const char* minutes : {"300.0", "300.9", "3e2", "3.00999e2"})
        EXPECT_EQ(windowsOf(window("1", minutes, "2"), "null").count("five_hour"), 1) << minutes;
    EXPECT_TRUE(windowsOf(window("1", "299.99", "2"), "null").empty());
}

TEST(CodexWindows, NeedAPercentageAndALength) {
    for (const char* candidate : {"{}", R"({"usedPercent":1})", R"({"windowDurationMins":300})",
                                  R"({"usedPercent":"1","windowDurationMins":300})",
                                  R"({"usedPercent":1,"windowDurationMins":"300"})",
                                  R"({"usedPercent":null,"windowDurationMins":300})",
                                  R"({"usedPercent":[1],"windowDurationMins":300})",
                                  R"({"usedPercent":1,"windowDurationMins":{}})"}) {
        EXPECT_TRUE(windowsOf(candidate, "null").empty()) << candidate;
    }
}

TEST(CodexWindows, TakeNoBooleanForANumber) {
    EXPECT_TRUE(windowsOf(window("true", "300", "1"), "null").empty());
    EXPECT_TRUE(windowsOf(window("false", "300", "1"), "null").empty());
    EXPECT_TRUE(windowsOf(window("1", "true", "1"), "null").empty());
    EXPECT_EQ(resetTime("true"), std::nullopt);
}

TEST(CodexWindows, AreObjects) {
    for (const char* candidate : {"null", "300", "true", R"("x")", "[]", "[300]"}) {
        EXPECT_EQ(windowsOf(candidate, window("3", "10080", "4")), (Windows{{"seven_day", {3, 4}}}))
            << candidate;
    }
    EXPECT_TRUE(CodexPoller::windows(parsed("{}")).empty());
}

TEST(CodexWindows, HaveAPercentageWithinZeroToAHundred) {
    EXPECT_EQ(percentage("100"), 100.0);
    EXPECT_EQ(percentage("100.4"), 100.0);
    EXPECT_EQ(percentage("140"), 100.0);
    EXPECT_EQ(percentage("1e999"), 100.0);
    EXPECT_EQ(percentage("0"), 0.0);
    EXPECT_EQ(percentage("-0.5"), 0.0);
    EXPECT_EQ(percentage("-1e999"), 0.0);
    EXPECT_EQ(percentage("1e-999"), 0.0);
}

TEST(CodexWindows, HaveAPercentageThatIsNotRounded) {
    EXPECT_EQ(percentage("33.333"), 33.333);
    EXPECT_EQ(percentage("99.99999999"), 99.99999999);
    EXPECT_EQ(percentage("0.0004"), 0.0004);
}

TEST(CodexWindows, HaveNoNegativeZero) {
    EXPECT_FALSE(std::signbit(percentage("-0").value()));
    EXPECT_FALSE(std::signbit(percentage("-1e-999").value()));
}

TEST(CodexWindows, MayHaveNoResetTime) {
    EXPECT_EQ(windowsOf(R"({"usedPercent":1,"windowDurationMins":300})", "null"),
              (Windows{{"five_hour", {1, std::nullopt}}}));
    for (const char* resetsAt : {"null", R"("1795242568")", "[]", "{}"})
        EXPECT_EQ(resetTime(resetsAt), std::nullopt) << resetsAt;
}

TEST(CodexWindows, HaveAResetTimeWhoseFractionIsDropped) {
    EXPECT_EQ(resetTime("1795242568"), 1795242568);
    EXPECT_EQ(resetTime("1795242568.99"), 1795242568);
    EXPECT_EQ(resetTime("1.795242568e9"), 1795242568);
    EXPECT_EQ(resetTime("-1.9"), -1);
    EXPECT_EQ(resetTime("0"), 0);
}

TEST(CodexWindows, HaveAnyResetTimeOfSixtyFourBits) {
    EXPECT_EQ(resetTime("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(resetTime("-9223372036854775808"), INT64_MIN);
}

using CodexWindowsDeathTest = ::testing::TestWithParam<const char*>;

TEST_P(CodexWindowsDeathTest, EndTheProcessOnAResetTimeBeyondSixtyFourBits) {
    EXPECT_EXIT(resetTime(GetParam()), ::testing::KilledBySignal(SIGABRT), "");
}

INSTANTIATE_TEST_SUITE_P(ResetTimes, CodexWindowsDeathTest,
                         ::testing::Values("9223372036854775808", "-9223372036854775809", "1e19",
                                           "-1e19", "1e999", "9223372036854775808.5"));

TEST(CodexWindows, DoNotLookAtTheResetTimeOfACandidateThatIsSkipped) {
    EXPECT_EQ(windowsOf(window("1", "60", "1e19"), window("3", "10080", "4")),
              (Windows{{"seven_day", {3, 4}}}));
    EXPECT_EQ(windowsOf(window("1", "300", "2"), window("3", "300", "1e19")),
              (Windows{{"five_hour", {1, 2}}}));
    EXPECT_TRUE(windowsOf(window("null", "300", "1e19"), "null").empty());
}

TEST(CodexCreditBlock, IsAbsentWhereItIsNoObject) {
    for (const char* members : {"", R"("credits":null)", R"("credits":[])", R"("credits":"12")"})
        EXPECT_EQ(CodexPoller::credits(withBlock(members)), std::nullopt) << members;
    EXPECT_EQ(CodexPoller::credits(parsed("{}")), std::nullopt);
}

TEST(CodexCreditBlock, WithoutMembersIsNotAbsent) {
    EXPECT_EQ(creditsOf(""), CodexCredits());
}

TEST(CodexCreditBlock, IsReadAsItStands) {
    EXPECT_EQ(
        creditsOf(R"("hasCredits":true,"unlimited":false,"balance":"12.349")"),
        (CodexCredits{
            .hasCredits = true, .unlimited = false, .balance = Decimal::fromDigits("12.349")}));
    EXPECT_EQ(creditsOf(R"("hasCredits":false,"unlimited":true,"balance":null)"),
              (CodexCredits{.hasCredits = false, .unlimited = true, .balance = std::nullopt}));
}

TEST(CodexCreditBlock, HasFlagsThatAreFalseWhereTheyAreNoBooleans) {
    for (const char* value : {"1", R"("true")", "null", "[true]", "{}"}) {
        const std::string flag = value;
        EXPECT_EQ(creditsOf(R"("hasCredits":)" + flag + R"(,"unlimited":)" + flag), CodexCredits())
            << value;
    }
}

TEST(CodexCreditBlock, HasABalanceOnlyFromAString) {
    for (const char* value : {"12.34", "0", "true", "null", R"(["12"])", R"({"amount":"12"})"}) {
        EXPECT_EQ(creditsOf(R"("balance":)" + std::string(value)).balance, std::nullopt) << value;
    }
}

TEST(CodexPlanType, IsTheStringThatTheServerSent) {
    EXPECT_EQ(CodexPoller::planType(withBlock(R"("planType":"plus")")), "plus");
    EXPECT_EQ(CodexPoller::planType(withBlock(R"("planType":"")")), "");
    EXPECT_EQ(CodexPoller::planType(withBlock(R"("planType":" 새 요금제 ")")), " 새 요금제 ");
}

TEST(CodexPlanType, IsAbsentWhereItIsNoString) {
    for (const char* members : {"", R"("planType":null)", R"("planType":7)", R"("planType":{})",
                                R"("planType":["plus"])", R"("planType":true)"}) {
        EXPECT_EQ(CodexPoller::planType(withBlock(members)), std::nullopt) << members;
    }
}

TEST(CodexBalance, IsDigitsWithAtMostOneInnerPoint) {
    EXPECT_EQ(balance("12"), "12");
    EXPECT_EQ(balance("12.5"), "12.5");
    EXPECT_EQ(balance("0.00"), "0");
    EXPECT_EQ(balance("007.10"), "7.1");
}

TEST(CodexBalance, MayHaveBlanksAndTabsAroundIt) {
    EXPECT_EQ(balance(" \t12.5\t "), "12.5");
    EXPECT_EQ(balance(std::string(1'000'000, ' ') + "1"), "1");
}

TEST(CodexBalance, HasNoOtherWhiteSpaceAroundOrWithinIt) {
    for (const char* text : {"12\n", "\r12", "12\v", "\f12", "\u00A012", "12\u2003", "1 2", "1\t2",
                             "12 .5", "12. 5", "", " ", "\t"}) {
        EXPECT_EQ(balance(text), "none") << text;
    }
}

TEST(CodexBalance, HasNoPointAtItsEndsNorASecondOne) {
    for (const char* text : {".", ".5", "5.", "..", "1..2", "1.2.3", ".1.", " .5", "5. "})
        EXPECT_EQ(balance(text), "none") << text;
}

TEST(CodexBalance, HasNoSignExponentOrSeparator) {
    for (const char* text : {"-1", "+1", "−1", "1e3", "1E3", "1.5e-3", "1,000", "1.000,5", "1'000",
                             "1_000", "12,5", "$12", "12%", "0x1F", "inf", "nan", "Infinity"}) {
        EXPECT_EQ(balance(text), "none") << text;
    }
}

TEST(CodexBalance, HasOnlyAsciiDigits) {
    for (const char* text : {"١٢", "１２", "१२", "12٫5", "1２", "²", "\xFF", "1\xFF"})
        EXPECT_EQ(balance(text), "none") << text;
}

TEST(CodexBalance, HasAtMostAHundredAndTwentyEightCharacters) {
    EXPECT_EQ(CodexPoller::longestBalanceCharacters, 128U);
    EXPECT_EQ(balance(std::string(128, '7')), std::string(128, '7'));
    EXPECT_EQ(balance(' ' + std::string(128, '7') + ' '), std::string(128, '7'));
    EXPECT_EQ(balance(std::string(129, '7')), "none");
    EXPECT_EQ(balance(std::string(127, '0') + ".1"), "none");
    EXPECT_EQ(balance(std::string(1'000'000, '9')), "none");
}

// A second way to read a balance: one character after the other, in billionths.
class PlainBalance {
  public:
    static std::optional<std::uint64_t> billionths(std::string_view text) {
        PlainBalance balance;
        for (const char character : text)
            balance.take(character);
        const Place place = balance.place_;
        if (place != Place::whole && place != Place::fraction && place != Place::after) {
            return std::nullopt;
        }
        return balance.billionths_;
    }

  private:
    enum class Place { before, whole, point, fraction, after, wrong };

    void take(char character) {
        place_ = next(character);
        if (place_ == Place::whole) {
            billionths_ = billionths_ * 10 + digit(character) * 1'000'000'000;
        } else if (place_ == Place::fraction) {
            scale_ /= 10;
            billionths_ += digit(character) * scale_;
        }
    }
    Place next(char character) const {
        const bool isFinished = place_ == Place::whole || place_ == Place::fraction;
        switch (character) {
            case ' ':
            case '\t':
                return isFinished ? Place::after : place_ == Place::point ? Place::wrong : place_;
            case '.':
                return place_ == Place::whole ? Place::point : Place::wrong;
            default:
                if (character < '0' || character > '9') return Place::wrong;
                if (place_ == Place::before) return Place::whole;
                if (place_ == Place::point) return Place::fraction;
                return isFinished ? place_ : Place::wrong;
        }
    }
    static std::uint64_t digit(char character) { return static_cast<unsigned>(character - '0'); }

    Place place_ = Place::before;
    std::uint64_t billionths_ = 0;
    std::uint64_t scale_ = 1'000'000'000;
};

std::string randomBalance(test::Random& random) {
    // No more than ten characters that may be digits: the second way has 64 bits.
    constexpr std::string_view characters = "00012345678999..  \t\t-+eE,\n";
    const std::size_t kinds = random.oneIn(2) ? 17 : characters.size();
    std::string text;
    for (std::size_t count = random.below(10); count > 0; --count)
        text += characters[random.below(kinds)];
    return text;
}

TEST(CodexBalance, AgreesWithASecondWayToReadItOverRandomTexts) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    int accepted = 0;
    for (int round = 0; round < 100'000; ++round) {
        const std::string text = randomBalance(random);
        const std::optional<std::uint64_t> expected = PlainBalance::billionths(text);
        const std::optional<Decimal> balance = CodexPoller::parseBalance(text);
        ASSERT_EQ(balance.has_value(), expected.has_value()) << text;
        if (!balance) continue;
        ++accepted;
        ASSERT_EQ(PlainBalance::billionths(balance->digits()), expected) << text;
        ASSERT_EQ(PlainBalance::billionths(balance->roundedDown(2).digits()),
                  *expected - *expected % 10'000'000)
            << text;
    }
    EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace brimwatch
