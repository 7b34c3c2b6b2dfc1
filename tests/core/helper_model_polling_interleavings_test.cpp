// Every order of what may happen before and during a question to Codex, each followed by every kind
// of late answer, against a plain telling of what has to come out.

#include <gmock/gmock.h>

#include <array>
#include <filesystem>

#include "accounts_fixture.h"
#include "codex_poll_oracle.h"
#include "core/codex_status_text.h"
#include "harness/random.h"

namespace brimwatch {
namespace {

using test::CodexPollOracle;

enum class Event {
    off,
    on,
    excludeAsked,
    includeAsked,
    excludeOther,
    removeFolderOfAsked,
    beginRemoval,
    settle,
    connect,
    poll,
    reload,
    destroy,
    // What only the random histories hold.
    includeOther,
    refresh,
    uninstall,
    install,
    answer,
};
constexpr std::array names = {"off",
                              "on",
                              "exclude",
                              "include",
                              "exclude the other",
                              "remove the folder",
                              "removal",
                              "settle",
                              "connect",
                              "poll",
                              "reload",
                              "destroy",
                              "include the other",
                              "refresh",
                              "uninstall",
                              "install",
                              "answer"};
constexpr int listedEvents = static_cast<int>(Event::destroy) + 1;
constexpr int allEvents = static_cast<int>(Event::answer) + 1;

// 0 is a reading, the others are failures.
constexpr int answerKinds = 6;

// One home, one model and the oracle beside it.
class Scenario : public test::AccountsFixture {
  public:
    Scenario() {
        makeCodexFolder(".codex-alpha");
        makeCodexFolder(".codex");
        const std::string manual = folder_.file("beta");
        test::writeFile(manual + "/config.toml", "");
        for (const char* name : {"r1", "r2"})
            writeStatusLine(makeClaudeFolder(std::string(".claude-") + name), ourStatusLine(name));
        defaults_.setStrings("claudeManualDirectories", {});
        defaults_.put("codexAccounts",
                      R"({"excluded":[],"manualDirectories":[")" + manual + R"("]})");
        start();
        std::vector<CodexPollOracle::Account> plain;
        for (const CodexAccounts::Account& account : model().codexAccounts()) {
            accounts_.push_back(account);
            plain.push_back({.key = account.key,
                             .folder = account.directory,
                             .staysListed = account.key != "alpha"});
        }
        oracle_.emplace(plain);
        plain_ = plain;
    }
    void TestBody() override {}

    // Brings the model to the point before its first question (0), or into that question.
    void reach(int point) {
        happen(Event::connect);
        if (point == 0) return;
        happen(Event::settle);
        for (int question = 1; question < point; ++question)
            answer(0);
    }

    void happen(Event event) {
        if (!model_) return;
        const std::size_t asked = askedIndex();
        const std::size_t other = (asked + 1) % accounts_.size();
        switch (event) {
            case Event::off:
                model().setCodexEnabled(false);
                oracle_->setEnabled(false);
                break;
            case Event::on:
                model().setCodexEnabled(true);
                oracle_->setEnabled(true);
                break;
            case Event::excludeAsked:
                return setAccount(asked, false);
            case Event::includeAsked:
                return setAccount(asked, true);
            case Event::excludeOther:
                return setAccount(other, false);
            case Event::includeOther:
                return setAccount(other, true);
            case Event::removeFolderOfAsked:
                std::filesystem::remove_all(accounts_[asked].directory);
                oracle_->removeFolder(plain_[asked]);
                break;
            default:
                happenToAll(event);
        }
    }

    // What may be answered of what is asked now.
    void answer(int kind) {
        if (!codex_.isAsking()) return;
        time_.setWallClock(now() + std::chrono::minutes(1));
        const double percentage = ++answers_;
        const CodexReadResult result = resultOf(kind, percentage);
        const std::string status =
            result ? receivedNow() : std::string(codexFailureText(result.error()));
        codex_.answer(result);
        if (!model_) return;
        oracle_->answer(result ? std::optional(percentage) : std::nullopt, status);
    }

    // Lets everything end, and tells whether it did.
    bool drain() {
        for (int turn = 0; turn < 20; ++turn) {
            settle();
            if (model_) oracle_->settle();
            compare();
            if (!codex_.isAsking()) return true;
            answer(turn % answerKinds);
            compare();
        }
        return false;
    }

    void compare() {
        EXPECT_LE(codex_.openCount(), 1U);
        if (model_) {
            compareViews(view(), oracle_->view());
        } else {
            EXPECT_EQ(files(), filesAtTheEnd_) << "a model that is gone writes nothing";
        }
    }

    bool isIdle() { return !model_ || (!model().pollingCodex() && !model().codexPollRequested()); }
    std::size_t sleepers() const { return time_.sleeperCount(); }

  private:
    void happenToAll(Event event) {
        switch (event) {
            case Event::beginRemoval:
                removeEverything();
                oracle_->beginRemoval();
                if (!model().isRemoving()) oracle_->endRemoval();
                break;
            case Event::settle:
                settle();
                oracle_->settle();
                break;
            case Event::connect:
                model().connectCodex();
                oracle_->connect();
                break;
            case Event::poll:
                poll();
                oracle_->poll();
                break;
            case Event::reload:
                model().reload();
                oracle_->reload();
                break;
            case Event::refresh:
                model().refresh();
                oracle_->refresh();
                break;
            case Event::uninstall:
            case Event::install:
                if (event == Event::uninstall) codex_.installed.reset();
                if (event == Event::install) codex_.installed = "/usr/bin/codex";
                oracle_->setInstalled(event == Event::install);
                break;
            case Event::destroy:
                filesAtTheEnd_ = files();
                model_.reset();
                break;
            default:
                answer(static_cast<int>(answers_) % answerKinds);
        }
    }

    void setAccount(std::size_t index, bool on) {
        model().setCodexAccount(accounts_[index], on);
        oracle_->setAccount(plain_[index], on);
    }

    // The account that is being asked; the first one while nobody is.
    std::size_t askedIndex() const {
        if (!codex_.isAsking()) return 0;
        const std::string& key = codex_.questions().back().account.key;
        std::size_t index = 0;
        while (accounts_[index].key != key)
            ++index;
        return index;
    }

    CodexReadResult resultOf(int kind, double percentage) const {
        if (kind == 0) return test::codexReading(percentage, percentage, now());
        if (kind == 5) return test::codexSystemError(std::errc::permission_denied);
        constexpr std::array kinds = {Kind::server, Kind::notFound, Kind::timedOut, Kind::noLimits};
        return test::codexFailure(kinds.at(static_cast<std::size_t>(kind - 1)));
    }

    CodexPollOracle::Figures files() const {
        CodexPollOracle::Figures figures;
        for (const CodexAccounts::Account& account : accounts_) {
            const std::optional<double> weekly = storedWeekly("codex-" + account.key);
            if (weekly) figures[account.key] = *weekly;
        }
        return figures;
    }

    CodexPollOracle::View view() {
        CodexPollOracle::View view;
        view.isEnabled = model().codexEnabled();
        view.isRemoving = model().isRemoving();
        view.isPolling = model().pollingCodex();
        view.isRequested = model().codexPollRequested();
        view.codexStatus = model().codexStatus();
        view.statuses = {model().codexAccountStatuses().begin(),
                         model().codexAccountStatuses().end()};
        for (const auto& [key, reading] : model().receivedCodex())
            view.received[key] = reading.windows.at("seven_day").usedPercentage;
        view.files = files();
        for (const SubscriptionLimits& limits : model().limits())
            view.shown[limits.account] = limits.sevenDay->usedPercentage;
        view.excluded = {model().codexSelection().excluded.begin(),
                         model().codexSelection().excluded.end()};
        view.asked = askedKeys();
        view.openQuestions = codex_.openCount();
        return view;
    }

    static void compareViews(const CodexPollOracle::View& shown,
                             const CodexPollOracle::View& expected) {
        if (shown == expected) return;
        EXPECT_EQ(shown.isEnabled, expected.isEnabled);
        EXPECT_EQ(shown.isRemoving, expected.isRemoving);
        EXPECT_EQ(shown.isPolling, expected.isPolling);
        EXPECT_EQ(shown.isRequested, expected.isRequested);
        EXPECT_EQ(shown.codexStatus, expected.codexStatus);
        EXPECT_EQ(shown.statuses, expected.statuses);
        EXPECT_EQ(shown.received, expected.received);
        EXPECT_EQ(shown.files, expected.files);
        EXPECT_EQ(shown.shown, expected.shown);
        EXPECT_EQ(shown.excluded, expected.excluded);
        EXPECT_EQ(shown.asked, expected.asked);
        EXPECT_EQ(shown.openQuestions, expected.openQuestions);
        ADD_FAILURE() << "the model differs from the oracle";
    }

    std::vector<CodexAccounts::Account> accounts_;
    std::vector<CodexPollOracle::Account> plain_;
    std::optional<CodexPollOracle> oracle_;
    CodexPollOracle::Figures filesAtTheEnd_;
    double answers_ = 0;
};

std::string told(int point, const std::vector<Event>& events, int kind) {
    std::string text = "at point " + std::to_string(point) + ':';
    for (const Event event : events)
        text += std::string(" ") + names.at(static_cast<std::size_t>(event)) + ',';
    return text + " answer " + std::to_string(kind);
}

void run(int point, const std::vector<Event>& events, int kind) {
    SCOPED_TRACE(told(point, events, kind));
    Scenario scenario;
    scenario.reach(point);
    scenario.compare();
    for (const Event event : events) {
        scenario.happen(event);
        scenario.compare();
    }
    scenario.answer(kind);
    scenario.compare();
    EXPECT_TRUE(scenario.drain()) << "it never comes to an end";
    EXPECT_TRUE(scenario.isIdle());
    EXPECT_EQ(scenario.sleepers(), 0U);
}

// 0: before the first question; 1 to 3: during that question.
class HelperModelPollingInterleavings : public ::testing::TestWithParam<int> {
    const test::FoldersInMemory inMemory_;
};

TEST_P(HelperModelPollingInterleavings, OfOneEventAndEachAnswer) {
    for (int kind = 0; kind < answerKinds; ++kind) {
        run(GetParam(), {}, kind);
        for (int event = 0; event < listedEvents && !HasFailure(); ++event)
            run(GetParam(), {static_cast<Event>(event)}, kind);
    }
}

TEST_P(HelperModelPollingInterleavings, OfTwoEventsAndEachAnswer) {
    for (int index = 0; index < listedEvents * listedEvents && !HasFailure(); ++index) {
        const std::vector<Event> events = {static_cast<Event>(index / listedEvents),
                                           static_cast<Event>(index % listedEvents)};
        if (events[0] == Event::destroy) continue;
        for (int kind = 0; kind < answerKinds; ++kind)
            run(GetParam(), events, kind);
    }
}

TEST_P(HelperModelPollingInterleavings, OfThreeEventsAndAReadingOrAFailure) {
    constexpr int squared = listedEvents * listedEvents;
    for (int index = 0; index < squared * listedEvents && !HasFailure(); ++index) {
        const std::vector<Event> events = {static_cast<Event>(index / squared),
                                           static_cast<Event>(index / listedEvents % listedEvents),
                                           static_cast<Event>(index % listedEvents)};
        if (events[0] == Event::destroy || events[1] == Event::destroy) continue;
        run(GetParam(), events, (index / squared + index) % 2);
    }
}

INSTANTIATE_TEST_SUITE_P(At, HelperModelPollingInterleavings, ::testing::Range(0, 4),
                         [](const auto& point) {
                             return point.param == 0 ? std::string("TheStart")
                                                     : "Question" + std::to_string(point.param);
                         });

TEST(HelperModelPollingHistories, EndAsTheyShouldHoweverLongTheyAre) {
    const test::FoldersInMemory inMemory;
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int history = 0; history < 300 && !::testing::Test::HasFailure(); ++history) {
        Scenario scenario;
        std::string past;
        for (int event = 0; event < 40; ++event) {
            auto next = static_cast<Event>(random.below(allEvents));
            if (next == Event::destroy && !random.oneIn(20)) next = Event::settle;
            past += std::string(names.at(static_cast<std::size_t>(next))) + ", ";
            SCOPED_TRACE(past);
            scenario.happen(next);
            scenario.compare();
            if (::testing::Test::HasFailure()) return;
        }
        SCOPED_TRACE(past);
        EXPECT_TRUE(scenario.drain());
        EXPECT_TRUE(scenario.isIdle());
        EXPECT_EQ(scenario.sleepers(), 0U);
    }
}

}  // namespace
}  // namespace brimwatch
