// Thirty days in the life of the model, with ten accounts, in which everything happens that can
// happen to files and clocks.

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "core/model_fixture.h"
#include "harness/random.h"
#include "limits_oracle.h"
#include "support/paths.h"
#include "usage_world.h"
#include "watched_file_system.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using std::chrono::seconds;

constexpr std::chrono::hours day{24};

// Of the first day, on which whatever can happen happens for the first time, 50 kB stay. A leak of
// two bytes in each reload would be more than this.
constexpr std::size_t memoryTolerance = 100'000;

std::ptrdiff_t descriptorCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

std::optional<test::OracleWindow> plain(const std::optional<UsageWindow>& window) {
    if (!window) return std::nullopt;
    test::OracleWindow result{.used = window->usedPercentage, .resetsAt = std::nullopt};
    if (window->resetsAt) result.resetsAt = wholeUnixSeconds(*window->resetsAt);
    return result;
}

std::vector<test::OracleRecord> plain(const std::vector<SubscriptionLimits>& limits) {
    std::vector<test::OracleRecord> records;
    for (const SubscriptionLimits& entry : limits) {
        records.push_back({.id = entry.id(),
                           .fiveHour = plain(entry.fiveHour),
                           .sevenDay = plain(entry.sevenDay),
                           .updatedAt = wholeUnixSeconds(entry.updatedAt)});
    }
    return records;
}

class ThirtyDays : public test::ModelFixture {
  protected:
    ThirtyDays() {
        for (const char* name : {".claude", ".claude-a", ".claude-b", ".claude-c", ".claude-d",
                                 ".claude-e", ".claude-f"}) {
            claudeFolders_.push_back(makeRegisteredFolder(name));
        }
        for (const char* name : {".codex", ".codex-x", ".codex-y"})
            makeCodexFolder(name);
        for (const test::UsageWorld::Account& account : claude_.accounts())
            wanted_.insert("claude-" + account.key);
        for (const test::UsageWorld::Account& account : codexWorld_.accounts())
            wanted_.insert("codex-" + account.key);
        files.beforeListing = [this](const std::string& folder) {
            if (folder != limits_) return;
            oracle_.reload(limits_, wanted_, wholeUnixSeconds(now()));
            ++reloadCount_;
        };
        codex_.answerAtOnce = [this](const test::ScriptedCodex::Question& question) {
            for (const test::UsageWorld::Account& account : codexWorld_.accounts()) {
                if (account.key == question.account.key) return codexWorld_.answer(account);
            }
            return test::codexFailure(CodexPoller::Failure::Kind::noLimits);
        };
    }

    void startAgain() {
        const HelperModel::Surroundings around = surroundingsWithServices();
        start({.defaults = around.defaults,
               .files = files,
               .home = around.home,
               .commandEnvironment = around.commandEnvironment,
               .codexEnvironment = around.codexEnvironment,
               .locale = around.locale,
               .now = around.now,
               .sleep = around.sleep,
               .pause = around.pause,
               .readCodex = around.readCodex,
               .findCodex = around.findCodex,
               .systemServices = around.systemServices});
    }

    void pass(seconds duration) {
        claude_.advance(duration);
        codexWorld_.advance(duration);
        advance(duration);
        defaults_.changes.clear();
        defaults_.writes.clear();
        codex_.forgetQuestions();
    }

    void reportSome() {
        for (test::UsageWorld::Account& account : claude_.accounts()) {
            if (!random_.oneIn(4)) continue;
            const FileResult<bool> written =
                LimitsFile::write(disk_, {.provider = "claude",
                                          .account = account.key,
                                          .windows = claude_.report(account),
                                          .planTier = std::nullopt,
                                          .minimumIntervalSeconds = 300,
                                          .mergingExisting = true,
                                          .now = now(),
                                          .folder = limits_});
            ASSERT_TRUE(written);
            if (*written) services_.watch.changed();
        }
    }

    void changeSomePlan() {
        const char* tiers[] = {"default_claude_pro", "default_claude_max_5x",
                               "default_claude_max_20x", "something_new"};
        const std::string& folder = claudeFolders_[random_.below(claudeFolders_.size())];
        test::writeFile(ClaudeCodeSetup::claudeConfigFile(folder, home_),
                        R"({"oauthAccount":{"organizationRateLimitTier":")" +
                            std::string(tiers[random_.below(std::size(tiers))]) + "\"}}");
        auto& accounts = codexWorld_.accounts();
        accounts[random_.below(accounts.size())].codexPlan = random_.oneIn(2) ? "pro" : "plus";
    }

    void damageSomeFile() {
        const std::string path = limits_ + '/' +
                                 *std::next(wanted_.begin(), std::ptrdiff_t(random_.below(10))) +
                                 ".json";
        if (!test::exists(path)) return;
        const std::string bytes = test::readFile(path);
        if (random_.oneIn(3)) {
            std::filesystem::remove(path);
        } else if (random_.oneIn(2)) {
            test::writeFile(path, bytes.substr(0, random_.below(bytes.size())));
        } else {
            test::writeFile(path, "\xFF\x00{]" + bytes);
        }
    }

    void setTheClock() {
        const seconds jump = random_.oneIn(2) ? seconds(random_.between(-7200, 7200))
                                              : seconds(random_.between(-3 * 86400, 3 * 86400));
        time_.setWallClock(now() + jump);
        lastShown_.clear();
    }

    void expectWhatTheOracleShows() {
        ASSERT_EQ(plain(model().limits()), oracle_.records());
        ASSERT_EQ(model().menuTitle(), oracle_.title());
        const std::optional<double> gauge = model().menuGauge().remaining;
        ASSERT_EQ(gauge.has_value(), !oracle_.title().empty());
        if (gauge) {
            ASSERT_EQ(std::to_string(std::lround(*gauge * 100)) + '%', oracle_.title());
        }
    }

    void expectNoStepBack() {
        for (const test::OracleRecord& record : plain(model().limits())) {
            if (!isComparable(record.id)) continue;
            test::OracleRecord& last = lastShown_[record.id];
            expectRise(last.fiveHour, record.fiveHour, record.id);
            expectRise(last.sevenDay, record.sevenDay, record.id);
            last = record;
        }
    }

    // Codex is believed whatever it says. A report without a reset time belongs to no cycle.
    static bool isComparable(const std::string& id) {
        return id.starts_with("claude-") && id != "claude-" + test::UsageWorld::forgetfulAccount;
    }

    void expectRise(const std::optional<test::OracleWindow>& before,
                    const std::optional<test::OracleWindow>& after, const std::string& id) {
        if (!before || !after) return;
        if (std::abs(*before->resetsAt - *after->resetsAt) > 3600) return;
        const bool isOver = *before->resetsAt <= wholeUnixSeconds(now());
        if (isOver) return;
        ASSERT_GE(after->used, before->used) << id;
    }

    void live(std::chrono::hours duration, bool isCalm) {
        seconds lived{};
        while (lived < duration && !HasFatalFailure()) {
            const seconds step(random_.between(5, 240));
            reportSome();
            if (random_.oneIn(300)) changeSomePlan();
            if (!isCalm && random_.oneIn(100)) damageSomeFile();
            if (!isCalm && random_.oneIn(5000)) std::filesystem::remove_all(limits_);
            if (!isCalm && random_.oneIn(400)) setTheClock();
            if (!isCalm && random_.oneIn(3000)) startAgain();
            pass(step);
            lived += step;
            // Only what a reload has seen is shown; the next one comes within a minute.
            expectNoStepBack();
            expectWhatTheOracleShows();
        }
    }

    // How long the history is depends on what was done in the last 24 hours. Three days ahead,
    // there is none but what Codex tells anew.
    std::size_t memoryWithoutHistory() {
        time_.setWallClock(now() + 3 * day);
        lastShown_.clear();
        pass(61s);
        const struct mallinfo2 memory = ::mallinfo2();
        return memory.uordblks + memory.hblkhd;
    }

    test::Random random_;
    std::string limits_ = limitsFolder(home_);
    test::WatchedFileSystem files{disk_};
    test::LimitsOracle oracle_;
    test::UsageWorld claude_{random_,
                             static_cast<std::int64_t>(startSeconds),
                             {"default", "a", "b", "c", "d", "e", "f"}};
    test::UsageWorld codexWorld_{
        random_, static_cast<std::int64_t>(startSeconds), {"default", "x", "y"}};
    std::set<std::string> wanted_;
    std::vector<std::string> claudeFolders_;
    std::map<std::string, test::OracleRecord> lastShown_;
    std::uint64_t reloadCount_ = 0;
};

TEST_F(ThirtyDays, LeaveNothingBehindAndEachFigureIsRight) {
    SCOPED_TRACE(random_.trace());
    startAgain();
    ASSERT_NO_FATAL_FAILURE(live(1h, true));
    const std::size_t memoryBefore = memoryWithoutHistory();
    const std::ptrdiff_t descriptorsBefore = descriptorCount();
    const std::uint64_t reloadsBefore = reloadCount_;

    ASSERT_NO_FATAL_FAILURE(live(30 * day, false));
    ASSERT_NO_FATAL_FAILURE(live(1h, true));

    const std::size_t memoryAfter = memoryWithoutHistory();
    std::printf("%llu reloads; memory in use: %zu bytes after the first hour, %zu at the end\n",
                static_cast<unsigned long long>(reloadCount_ - reloadsBefore), memoryBefore,
                memoryAfter);
    EXPECT_EQ(descriptorCount(), descriptorsBefore);
    EXPECT_GT(reloadCount_ - reloadsBefore, 30U * 1440U);
    EXPECT_LT(memoryAfter, memoryBefore + memoryTolerance);
    EXPECT_EQ(model().limits().size(), 10U);
}

}  // namespace
}  // namespace brimwatch
