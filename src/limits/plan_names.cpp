#include "limits/plan_names.h"

#include <algorithm>
#include <array>
#include <utility>

namespace brimwatch {
namespace {

using PlanName = std::pair<std::string_view, std::string_view>;

// A tier may hold more than one of these; the first one counts.
constexpr std::array<PlanName, 3> claudePlanNames = {{
    {"max_20x", "Max 20배"},
    {"max_5x", "Max 5배"},
    {"claude_pro", "Pro"},
}};

constexpr std::array<PlanName, 17> codexPlanNames = {{
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
}};

constexpr char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

// Whether the text holds the part, which is in lower case. Only ASCII letters have another case
// here: no other letter becomes one of those that the identifiers are made of.
bool containsInAnyCase(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return lowerCase(a) == b; }) != text.end();
}

}  // namespace

std::optional<std::string_view> claudePlanName(std::optional<std::string_view> tier) {
    if (!tier) return std::nullopt;
    for (const auto& [part, name] : claudePlanNames) {
        if (containsInAnyCase(*tier, part)) return name;
    }
    return std::nullopt;
}

std::optional<std::string_view> codexPlanName(std::optional<std::string_view> planType) {
    if (!planType) return std::nullopt;
    for (const auto& [identifier, name] : codexPlanNames) {
        if (*planType == identifier) return name;
    }
    return std::nullopt;
}

bool isPlanName(std::string_view text) {
    const auto gives = [text](const PlanName& entry) { return entry.second == text; };
    return std::any_of(claudePlanNames.begin(), claudePlanNames.end(), gives) ||
           std::any_of(codexPlanNames.begin(), codexPlanNames.end(), gives);
}

}  // namespace brimwatch
