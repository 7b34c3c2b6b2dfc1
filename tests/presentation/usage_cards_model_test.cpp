#include "presentation/usage_cards_model.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <vector>

#include "card_examples.h"
#include "harness/random.h"

namespace brimwatch {
namespace {

using Cards = std::vector<UsageCardContent>;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

UsageCardContent cardOf(const QString& account, const QString& amount = "82%") {
    UsageCardContent card;
    card.provider = "claude";
    card.account = account;
    card.cardKey = "subscription.claude-" + account;
    card.hasMainWindow = true;
    card.amount = amount;
    return card;
}

Cards cardsOf(const std::vector<QString>& accounts) {
    Cards cards;
    for (const QString& account : accounts)
        cards.push_back(cardOf(account));
    return cards;
}

// What a view would hold that follows the signals of the model and asks for nothing else.
class Follower {
  public:
    explicit Follower(const UsageCardsModel& model) : model_(model) {
        QObject::connect(&model, &UsageCardsModel::rowsInserted, &model,
                         [this](const QModelIndex&, int first, int last) { insert(first, last); });
        QObject::connect(&model, &UsageCardsModel::rowsRemoved, &model,
                         [this](const QModelIndex&, int first, int last) { remove(first, last); });
        QObject::connect(&model, &UsageCardsModel::rowsMoved, &model,
                         [this](const QModelIndex&, int first, int last, const QModelIndex&,
                                int place) { move(first, last, place); });
        QObject::connect(&model, &UsageCardsModel::dataChanged, &model,
                         [this](const QModelIndex& first, const QModelIndex& last,
                                const QList<int>& roles) { change(first, last, roles); });
        QObject::connect(&model, &UsageCardsModel::modelReset, &model, [this] { ++resets_; });
    }

    struct Counts {
        int inserted = 0;
        int removed = 0;
        int moved = 0;
        int changed = 0;  // rows

        bool operator==(const Counts&) const = default;
    };

    Counts take() { return std::exchange(counts_, {}); }
    // The names of the roles that the last change named, sorted.
    std::vector<std::string> lastRoles() const { return lastRoles_; }
    int resets() const { return resets_; }

    bool isUpToDate() const {
        if (rows_.size() != static_cast<std::size_t>(model_.rowCount())) return false;
        for (std::size_t row = 0; row < rows_.size(); ++row)
            if (rows_[row] != values(static_cast<int>(row))) return false;
        return true;
    }

  private:
    using Values = QMap<int, QVariant>;

    Values values(int row) const {
        Values values;
        for (const int role : model_.roleNames().keys())
            values[role] = model_.index(row).data(role);
        return values;
    }

    void insert(int first, int last) {
        for (int row = first; row <= last; ++row, ++counts_.inserted)
            rows_.insert(rows_.begin() + row, values(row));
    }
    void remove(int first, int last) {
        rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
        counts_.removed += last - first + 1;
    }
    void move(int first, int last, int place) {
        const std::vector<Values> moved(rows_.begin() + first, rows_.begin() + last + 1);
        rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
        const int shift = place > last ? last - first + 1 : 0;
        rows_.insert(rows_.begin() + place - shift, moved.begin(), moved.end());
        counts_.moved += last - first + 1;
    }
    void change(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
        lastRoles_.clear();
        for (const int role : roles)
            lastRoles_.push_back(model_.roleNames().value(role).toStdString());
        std::sort(lastRoles_.begin(), lastRoles_.end());
        for (int row = first.row(); row <= last.row(); ++row, ++counts_.changed) {
            for (const int role : roles) {
                Values& values = rows_[static_cast<std::size_t>(row)];
                EXPECT_NE(values[role], model_.index(row).data(role)) << "nothing changed";
                values[role] = model_.index(row).data(role);
            }
        }
    }

    const UsageCardsModel& model_;
    std::vector<Values> rows_;
    Counts counts_;
    std::vector<std::string> lastRoles_;
    int resets_ = 0;
};

class UsageCardsModelTest : public ::testing::Test {
  protected:
    using Counts = Follower::Counts;

    void show(const Cards& cards) {
        model_.setCards(cards);
        EXPECT_EQ(model_.cards(), cards);
        EXPECT_TRUE(follower_.isUpToDate());
    }

    QVariant value(int row, const char* name) const {
        return model_.index(row).data(model_.roleNames().key(name, -1));
    }

    UsageCardsModel model_;
    // Ends the program at the first breach of what views rely on.
    QAbstractItemModelTester tester_{&model_,
                                     QAbstractItemModelTester::FailureReportingMode::Fatal};
    Follower follower_{model_};
};

TEST_F(UsageCardsModelTest, IsEmptyAtFirst) {
    EXPECT_EQ(model_.rowCount(), 0);
    EXPECT_THAT(model_.cards(), IsEmpty());
}

TEST_F(UsageCardsModelTest, GivesEveryFieldUnderItsName) {
    UsageCardContent card;
    std::map<std::string, QVariant> expected;
    const auto set = [&expected](const char* name, auto& field, auto value) {
        field = value;
        expected[name] = QVariant(value);
    };
    set("provider", card.provider, QString("codex"));
    set("account", card.account, QString("work"));
    set("identifierSuffix", card.identifierSuffix, QString("codex-work"));
    set("cardKey", card.cardKey, QString("subscription.codex-work"));
    set("title", card.title, QString("Codex · work"));
    set("plan", card.plan, QString("Plus"));
    set("hasMainWindow", card.hasMainWindow, true);
    set("amount", card.amount, QString("82%"));
    set("amountSuffix", card.amountSuffix, QString("남음"));
    set("gaugeFraction", card.gaugeFraction, 0.82);
    set("gaugeLabel", card.gaugeLabel, QString("주간 한도 남음"));
    set("gaugeValue", card.gaugeValue, QString("82 %"));
    set("statusText", card.statusText, QString("슬슬 아껴 써요"));
    set("statusSymbol", card.statusSymbol, QString("exclamationmark.triangle.fill"));
    set("resetText", card.resetText, QString("3일 후 초기화"));
    set("resetLabel", card.resetLabel, QString("9월 25일에 초기화"));
    set("hasSecondWindow", card.hasSecondWindow, true);
    set("fiveHourText", card.fiveHourText, QString("40% 남음"));
    set("fiveHourPassed", card.fiveHourPassed, true);
    set("fiveHourResetText", card.fiveHourResetText, QString("· 1:23:45 후"));
    set("fiveHourResetLabel", card.fiveHourResetLabel, QString("오후 3:00에 초기화"));
    set("hasRecentUsage", card.hasRecentUsage, true);
    set("recentTitle", card.recentTitle, QString("최근 1시간"));
    set("recentText", card.recentText, QString("주간 약 12.3%"));
    set("credit", card.credit, QString("5"));
    set("creditLabel", card.creditLabel, QString("크레딧 5 남음"));
    set("freshness", card.freshness, QString("Codex에서 방금 받음"));
    set("needsAttention", card.needsAttention, true);
    card.level = UsageLevel::warning;
    card.fiveHourLevel = UsageLevel::exhausted;
    expected["level"] = 2;
    expected["fiveHourLevel"] = 3;
    show({card});
    std::map<std::string, QVariant> given;
    const QHash<int, QByteArray> names = model_.roleNames();
    for (auto name = names.begin(); name != names.end(); ++name)
        given[name->toStdString()] = model_.index(0).data(name.key());
    EXPECT_EQ(given, expected);
}

TEST_F(UsageCardsModelTest, GivesNothingForAnotherRoleOrRow) {
    show({cardOf("a")});
    EXPECT_FALSE(model_.index(0).data(Qt::DisplayRole).isValid());
    EXPECT_FALSE(model_.index(0).data(Qt::UserRole + 1000).isValid());
    EXPECT_FALSE(model_.data({}, model_.roleNames().key("amount")).isValid());
    EXPECT_EQ(model_.rowCount(model_.index(0)), 0);
}

TEST_F(UsageCardsModelTest, TouchesNothingWhereNothingChanged) {
    show(cardsOf({"a", "b", "c"}));
    follower_.take();
    show(cardsOf({"a", "b", "c"}));
    EXPECT_EQ(follower_.take(), Counts());
}

TEST_F(UsageCardsModelTest, ChangesOnlyTheRolesThatDid) {
    show({cardOf("a", "82%"), cardOf("b", "50%")});
    follower_.take();
    UsageCardContent later = cardOf("b", "49%");
    later.level = UsageLevel::overHalf;
    show({cardOf("a", "82%"), later});
    EXPECT_EQ(follower_.take(), (Counts{.changed = 1}));
    EXPECT_THAT(follower_.lastRoles(), ElementsAre("amount", "level"));
}

TEST_F(UsageCardsModelTest, InsertsAndRemovesWithoutTouchingTheOthers) {
    show(cardsOf({"a", "c"}));
    follower_.take();
    show(cardsOf({"a", "b", "c", "d"}));
    EXPECT_EQ(follower_.take(), (Counts{.inserted = 2}));
    show(cardsOf({"b", "d"}));
    EXPECT_EQ(follower_.take(), (Counts{.removed = 2}));
    show({});
    EXPECT_EQ(follower_.take(), (Counts{.removed = 2}));
}

TEST_F(UsageCardsModelTest, MovesTheOneCardThatTheUserMoved) {
    show(cardsOf({"a", "b", "c", "d", "e"}));
    follower_.take();
    show(cardsOf({"b", "c", "d", "e", "a"}));
    EXPECT_EQ(follower_.take(), (Counts{.moved = 1}));
    show(cardsOf({"a", "b", "c", "d", "e"}));
    EXPECT_EQ(follower_.take(), (Counts{.moved = 1}));
    show(cardsOf({"a", "d", "b", "c", "e"}));
    EXPECT_EQ(follower_.take(), (Counts{.moved = 1}));
    show(cardsOf({"e", "d", "c", "b", "a"}));
    EXPECT_EQ(follower_.take().moved, 3);
}

TEST_F(UsageCardsModelTest, KeepsTwoCardsOfOneAccountApart) {
    show({cardOf("a", "1%"), cardOf("a", "2%"), cardOf("b")});
    follower_.take();
    show({cardOf("b"), cardOf("a", "1%"), cardOf("a", "3%")});
    EXPECT_EQ(follower_.take(), (Counts{.moved = 1, .changed = 1}));
    show({cardOf("a", "1%")});
    EXPECT_EQ(follower_.take(), (Counts{.removed = 2}));
}

// By trying every choice of the cards that stay where they are.
int fewestMoves(const std::vector<int>& places) {
    int most = 0;
    for (unsigned choice = 0; choice < 1U << places.size(); ++choice) {
        std::vector<int> chosen;
        for (std::size_t index = 0; index < places.size(); ++index)
            if ((choice >> index & 1U) != 0) chosen.push_back(places[index]);
        if (std::is_sorted(chosen.begin(), chosen.end()))
            most = std::max(most, static_cast<int>(chosen.size()));
    }
    return static_cast<int>(places.size()) - most;
}

Cards randomCards(test::Random& random) {
    std::vector<QString> accounts = {"a", "b", "c", "d", "e", "f", "g"};
    for (std::size_t last = accounts.size(); last > 1; --last)
        std::swap(accounts[random.below(last)], accounts[last - 1]);
    accounts.resize(random.below(accounts.size() + 1));
    Cards cards;
    for (const QString& account : accounts)
        cards.push_back(cardOf(account, QString::number(random.below(3))));
    return cards;
}

Follower::Counts fewestChanges(const Cards& from, const Cards& to) {
    Follower::Counts counts;
    std::vector<int> places;
    for (const UsageCardContent& card : from) {
        const auto kept = std::find_if(
            to.begin(), to.end(),
            [&card](const UsageCardContent& other) { return other.cardKey == card.cardKey; });
        if (kept == to.end()) {
            ++counts.removed;
        } else {
            places.push_back(static_cast<int>(kept - to.begin()));
            if (*kept != card) ++counts.changed;
        }
    }
    counts.inserted = static_cast<int>(to.size() - places.size());
    counts.moved = fewestMoves(places);
    return counts;
}

TEST_F(UsageCardsModelTest, GoesFromAnyListToAnyOtherByTheFewestChanges) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    Cards shown;
    for (int step = 0; step < 1000; ++step) {
        const Cards next = randomCards(random);
        show(next);
        ASSERT_EQ(follower_.take(), fewestChanges(shown, next)) << "step " << step;
        shown = next;
    }
    EXPECT_EQ(follower_.resets(), 0);
}

TEST_F(UsageCardsModelTest, FollowsListsWithSeveralCardsOfOneAccount) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int step = 0; step < 500; ++step) {
        Cards cards;
        for (std::size_t left = random.below(8); left > 0; --left)
            cards.push_back(cardOf(QString(QChar('a' + static_cast<char>(random.below(3)))),
                                   QString::number(random.below(3))));
        show(cards);
        ASSERT_FALSE(::testing::Test::HasFailure()) << "step " << step;
    }
}

}  // namespace
}  // namespace brimwatch
