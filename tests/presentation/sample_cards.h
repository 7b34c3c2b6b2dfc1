// Cards as they come out of real accounts, for tests and pictures.
#pragma once

#include <QString>
#include <vector>

#include "presentation/subscription_usage_card.h"

namespace brimwatch::test {

// A weekly limit with 82 percent left, a five-hour one, and what was used lately.
inline UsageCardContent comfortableCard(const QString& account = QStringLiteral("default")) {
    UsageCardContent card;
    card.provider = QStringLiteral("claude");
    card.account = account;
    card.identifierSuffix = QStringLiteral("claude-") + account;
    card.cardKey = QStringLiteral("subscription.") + card.identifierSuffix;
    card.title = QStringLiteral("Claude");
    card.plan = QStringLiteral("Max 20배");
    card.hasMainWindow = true;
    card.amount = QStringLiteral("82%");
    card.amountSuffix = QStringLiteral("남음");
    card.gaugeFraction = 0.82;
    card.gaugeLabel = QStringLiteral("주간 한도 남음");
    card.gaugeValue = QStringLiteral("82%");
    card.level = UsageLevel::comfortable;
    card.statusText = QStringLiteral("넉넉해요");
    card.statusSymbol = QStringLiteral("checkmark.circle.fill");
    card.resetText = QStringLiteral("3일 후 초기화");
    card.resetLabel = QStringLiteral("11월 24일 (화) 오후 3시에 초기화");
    card.hasSecondWindow = true;
    card.fiveHourText = QStringLiteral("64% 남음");
    card.fiveHourLevel = UsageLevel::comfortable;
    card.fiveHourResetText = QStringLiteral("· 1:23:45 후");
    card.fiveHourResetLabel = QStringLiteral("오후 6:20에 초기화");
    card.hasRecentUsage = true;
    card.recentTitle = QStringLiteral("최근 4시간");
    card.recentText = QStringLiteral("주간 약 2.4%");
    card.freshness = QStringLiteral("Claude Code에서 2분 전 받음");
    return card;
}

inline UsageCardContent withLevel(UsageCardContent card, UsageLevel level) {
    struct Words {
        const char16_t* amount;
        double fraction;
        const char16_t* text;
        const char16_t* symbol;
    };
    static constexpr Words words[] = {
        {u"82%", 0.82, u"넉넉해요", u"checkmark.circle.fill"},
        {u"41%", 0.41, u"절반 넘게 썼어요", u"circle.lefthalf.filled"},
        {u"12%", 0.12, u"슬슬 아껴 써요", u"exclamationmark.triangle.fill"},
        {u"0%", 0, u"한도에 닿았어요", u"exclamationmark.octagon.fill"},
    };
    const Words& chosen = words[static_cast<int>(level)];
    card.level = level;
    card.amount = QString::fromUtf16(chosen.amount);
    card.gaugeFraction = chosen.fraction;
    card.gaugeValue = card.amount;
    card.statusText = QString::fromUtf16(chosen.text);
    card.statusSymbol = QString::fromUtf16(chosen.symbol);
    return card;
}

inline UsageCardContent codexCard(const QString& account = QStringLiteral("default")) {
    UsageCardContent card = comfortableCard(account);
    card.provider = QStringLiteral("codex");
    card.identifierSuffix = QStringLiteral("codex-") + account;
    card.cardKey = QStringLiteral("subscription.") + card.identifierSuffix;
    card.title = QStringLiteral("Codex");
    card.plan = QStringLiteral("Plus");
    card.credit = QStringLiteral("12.50");
    card.creditLabel = QStringLiteral("크레딧 12.50 남음");
    card.freshness = QStringLiteral("Codex에서 방금 받음");
    return card;
}

// All that a card can show, in its longest words.
inline UsageCardContent fullestCard() {
    UsageCardContent card = withLevel(codexCard(QStringLiteral("longest")), UsageLevel::overHalf);
    card.title = QStringLiteral(
        "Codex · 아주 길고 길어서 한 줄에 다 들어가지 않는 계정 이름이에요 정말로요");
    card.plan = QStringLiteral("Enterprise Self-Serve CBP Usage Based");
    card.amount = QStringLiteral("100%");
    card.resetText = QStringLiteral("23:59:59 후 초기화");
    card.fiveHourText = QStringLiteral("100% 남음");
    card.recentText = QStringLiteral("초기화 후 기록 중");
    card.credit = QStringLiteral("1,234,567,890.12");
    card.freshness =
        QStringLiteral("23시간 전 받은 값이에요. 맥이 켜져 있으면 5분마다 새로 받아요.");
    card.needsAttention = true;
    return card;
}

inline std::vector<UsageCardContent> cards(int count) {
    std::vector<UsageCardContent> cards;
    for (int index = 0; index < count; ++index) {
        const QString account = QStringLiteral("account%1").arg(index);
        UsageCardContent card = index % 2 == 0 ? comfortableCard(account) : codexCard(account);
        card.title += QStringLiteral(" · ") + account;
        cards.push_back(withLevel(card, static_cast<UsageLevel>(index % 4)));
    }
    return cards;
}

}  // namespace brimwatch::test
