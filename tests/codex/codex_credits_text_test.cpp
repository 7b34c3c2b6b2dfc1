#include <gtest/gtest.h>
#include <unicode/locid.h>

#include "codex/codex_credits.h"
#include "harness/random.h"

namespace brimwatch {
namespace {

using Text = CodexCredits::Text;

CodexCredits credits(std::string_view balance) {
    return {.hasCredits = true, .unlimited = false, .balance = Decimal::fromDigits(balance)};
}

// The balance text, or "none" where there is no row.
std::string shown(std::string_view balance, const std::string& locale = "ko") {
    const std::optional<Text> text = credits(balance).text(locale);
    return text ? text->balance.value() : "none";
}

TEST(CodexCreditsText, IsUnlimitedWhateverElseTheBlockSays) {
    const Text unlimited = {.balance = std::nullopt};
    for (const bool hasCredits : {false, true}) {
        for (const char* balance : {"none", "0", "12.34"}) {
            const CodexCredits credits = {.hasCredits = hasCredits,
                                          .unlimited = true,
                                          .balance = Decimal::fromDigits(balance)};
            EXPECT_EQ(credits.text("ko"), unlimited) << hasCredits << balance;
        }
    }
}

TEST(CodexCreditsText, IsNoRowWithoutCreditsOrBalance) {
    EXPECT_EQ(CodexCredits{}.text("ko"), std::nullopt);
    CodexCredits withoutBalance = credits("12.34");
    withoutBalance.balance.reset();
    EXPECT_EQ(withoutBalance.text("ko"), std::nullopt);
    CodexCredits withoutCredits = credits("12.34");
    withoutCredits.hasCredits = false;
    EXPECT_EQ(withoutCredits.text("ko"), std::nullopt);
}

TEST(CodexCreditsText, RoundsDown) {
    EXPECT_EQ(shown("12.349"), "12.34");
    EXPECT_EQ(shown("12.345"), "12.34");
    EXPECT_EQ(shown("0.999999"), "0.99");
    EXPECT_EQ(shown("999.99999"), "999.99");
}

TEST(CodexCreditsText, IsNoRowForLessThanAHundredth) {
    EXPECT_EQ(shown("0.004"), "none");
    EXPECT_EQ(shown("0.00999"), "none");
    EXPECT_EQ(shown("0"), "none");
    EXPECT_EQ(shown("0.00"), "none");
    EXPECT_EQ(shown("0.01"), "0.01");
}

TEST(CodexCreditsText, HasNoMoreFractionDigitsThanItNeeds) {
    EXPECT_EQ(shown("12"), "12");
    EXPECT_EQ(shown("12.00"), "12");
    EXPECT_EQ(shown("12.50"), "12.5");
    EXPECT_EQ(shown("12.05"), "12.05");
}

TEST(CodexCreditsText, IsExactBeyondTheDigitsOfADouble) {
    EXPECT_EQ(shown("9007199254740993.01"), "9,007,199,254,740,993.01");
    EXPECT_EQ(shown("123456789012345678901234567890.129"),
              "123,456,789,012,345,678,901,234,567,890.12");
    EXPECT_EQ(shown("0.29"), "0.29");
    EXPECT_EQ(shown("1.15"), "1.15");
}

TEST(CodexCreditsText, IsWrittenAsTheLocaleWritesNumbers) {
    EXPECT_EQ(shown("1234567.899", "ko"), "1,234,567.89");
    EXPECT_EQ(shown("1234567.899", "en"), "1,234,567.89");
    EXPECT_EQ(shown("1234567.899", "de"), "1.234.567,89");
    EXPECT_EQ(shown("1234567.899", "hi_IN"), "12,34,567.89");
    EXPECT_EQ(shown("1234567.899", "fr"), "1\u202F234\u202F567,89");
    EXPECT_EQ(shown("1234567.899", "ar"), "١٬٢٣٤٬٥٦٧٫٨٩");
}

TEST(CodexCreditsText, IsGroupedOnlyWhereTheLocaleGroups) {
    EXPECT_EQ(shown("1234.5", "es"), "1234,5");
    EXPECT_EQ(shown("12345.6", "es"), "12.345,6");
    EXPECT_EQ(shown("1234.5", "ko"), "1,234.5");
}

TEST(CodexCreditsText, TakesLocalesAsDifferentSystemsSpellThem) {
    EXPECT_EQ(shown("1234567.89", "de_DE.UTF-8"), "1.234.567,89");
    EXPECT_EQ(shown("1234567.89", "hi-IN"), "12,34,567.89");
    EXPECT_EQ(shown("1234567.89", "hi_IN@numbers=deva"), "१२,३४,५६७.८९");
}

TEST(CodexCreditsText, KeepsTheDigitsInALocaleThatNobodyKnows) {
    const icu::Locale former;
    for (const char* ofProcess : {"en_US", "de_DE", "ar_EG", "hi_IN"}) {
        UErrorCode error = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(ofProcess), error);
        for (const std::string& locale :
             {std::string(), std::string("C"), std::string("xx"), std::string("not a locale!"),
              std::string("\xFF\xFE"), std::string(100'000, 'x')}) {
            EXPECT_EQ(shown("1234.567", locale), "1,234.56") << ofProcess << locale.substr(0, 20);
        }
        icu::Locale::setDefault(former, error);
    }
}

TEST(CodexCreditsText, NeverShowsMoreThanTheBalanceOverRandomOnes) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 20'000; ++round) {
        const std::uint64_t thousandths = random.bits() >> random.below(64);
        std::string fraction = std::to_string(1000 + thousandths % 1000).substr(1);
        const std::string whole = std::to_string(thousandths / 1000);
        std::string expected = whole + '.' + fraction.substr(0, 2);
        expected.erase(expected.find_last_not_of('0') + 1);
        if (expected.ends_with('.')) expected.pop_back();
        std::string text = shown(whole + '.' + fraction, "en");
        std::erase(text, ',');
        ASSERT_EQ(text, expected == "0" ? "none" : expected);
    }
}

TEST(CodexCreditsRow, ShowsUnlimitedCreditsInWords) {
    const Text unlimited = {.balance = std::nullopt};
    EXPECT_EQ(unlimited.value(), "무제한");
    EXPECT_EQ(unlimited.accessibilityLabel(), "크레딧 무제한");
}

TEST(CodexCreditsRow, ShowsTheBalanceAndReadsItOutAsWhatIsLeft) {
    const Text balance = credits("12.349").text("ko").value();
    EXPECT_EQ(balance.value(), "12.34");
    EXPECT_EQ(balance.accessibilityLabel(), "크레딧 12.34 남음");
}

}  // namespace
}  // namespace brimwatch
