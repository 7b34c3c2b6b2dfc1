#include "limits/plan_names.h"

#include <gtest/gtest.h>

#include <string>

namespace brimwatch {
namespace {

TEST(ClaudePlanName, IsTakenFromWhatTheTierContains) {
    EXPECT_EQ(claudePlanName("max_20x"), "Max 20배");
    EXPECT_EQ(claudePlanName("max_5x"), "Max 5배");
    EXPECT_EQ(claudePlanName("claude_pro"), "Pro");
    EXPECT_EQ(claudePlanName("default_claude_max_20x"), "Max 20배");
    EXPECT_EQ(claudePlanName("default_claude_max_5x"), "Max 5배");
}

TEST(ClaudePlanName, UpperAndLowerCaseAreEqual) {
    EXPECT_EQ(claudePlanName("MAX_5X"), "Max 5배");
    EXPECT_EQ(claudePlanName("Default_Claude_Max_20X"), "Max 20배");
}

TEST(ClaudePlanName, ATierMayHoldMoreThanAPlan) {
    EXPECT_EQ(claudePlanName("claude_pro_plus"), "Pro");
}

TEST(ClaudePlanName, OfSeveralPlansInATierTheLargestCounts) {
    EXPECT_EQ(claudePlanName("claude_pro_max_5x_max_20x"), "Max 20배");
    EXPECT_EQ(claudePlanName("claude_pro_max_5x"), "Max 5배");
}

TEST(ClaudePlanName, AnUnknownTierHasNone) {
    for (const char* tier : {"", "pro", "max", "max_2x", "max_20", "claude pro", "한글"}) {
        EXPECT_EQ(claudePlanName(tier), std::nullopt) << tier;
    }
    EXPECT_EQ(claudePlanName(std::nullopt), std::nullopt);
}

TEST(ClaudePlanName, LongTiersAndBytesThatAreNotTextAreFine) {
    EXPECT_EQ(claudePlanName(std::string(1 << 20, 'm')), std::nullopt);
    EXPECT_EQ(claudePlanName(std::string(1 << 20, '\xFF') + "max_5x"), "Max 5배");
    EXPECT_EQ(claudePlanName(std::string_view("\0max_5x", 7)), "Max 5배");
}

TEST(CodexPlanName, EveryKnownPlanTypeHasItsName) {
    const std::pair<const char*, const char*> names[] = {
        {"free", "Free"},
        {"go", "Go"},
        {"plus", "Plus"},
        {"pro", "Pro"},
        {"prolite", "Pro Lite"},
        {"promax", "Pro Max"},
        {"team", "Team"},
        {"business", "Business"},
        {"self_serve_business_prolite", "Business"},
        {"self_serve_business_usage_based", "Business"},
        {"enterprise", "Enterprise"},
        {"ent26", "Enterprise"},
        {"enterprise_cbp_automation", "Enterprise"},
        {"enterprise_cbp_usage_based", "Enterprise"},
        {"edu", "Edu"},
        {"edu_plus", "Edu Plus"},
        {"edu_pro", "Edu Pro"},
    };
    for (const auto& [planType, name] : names) {
        EXPECT_EQ(codexPlanName(planType), name);
    }
}

TEST(CodexPlanName, TheMatchIsExact) {
    for (const char* planType :
         {"Pro", "PRO", "pro ", " pro", "pr", "proo", "unknown", "sci", ""}) {
        EXPECT_EQ(codexPlanName(planType), std::nullopt) << planType;
    }
    EXPECT_EQ(codexPlanName(std::string_view("pro\0", 4)), std::nullopt);
    EXPECT_EQ(codexPlanName(std::nullopt), std::nullopt);
}

TEST(PlanName, IsKnownByTheTextThatItGives) {
    for (const char* text : {"Max 20배", "Max 5배", "Pro", "Pro Lite", "Enterprise", "Edu Plus"})
        EXPECT_TRUE(isPlanName(text)) << text;
    for (const char* text : {"", "pro", "prolite", "max_20x", "Max 20", "Pro ", "Gold"})
        EXPECT_FALSE(isPlanName(text)) << text;
}

}  // namespace
}  // namespace brimwatch
