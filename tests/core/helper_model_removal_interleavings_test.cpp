// A removal in which something else happens at each point where it gives the thread up.

#include <gmock/gmock.h>

#include <array>
#include <filesystem>

#include "harness/random.h"
#include "harness/temporary_folder.h"
#include "publish/publishers/task_result.h"
#include "removal_world.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using Order = test::RemovalWorld::Order;

enum class Event {
    pressAgain,
    reload,
    refresh,
    codexReading,
    codexFailure,
    poll,
    newFolder,
    folderOfOurs,
    folderGoes,
    statusLineChanges,
    connectClaude,
    disconnectClaude,
    addClaudeFolder,
    connectCodex,
    codexAccountOn,
    codexOn,
    cloudOn,
    cloudOff,
    showLink,
    rotateLink,
    endLink,
    newFigures,
    minutePasses,
    clockJumps,
    endPause,
    loginOn,
    loginOff,
    diskFills,
    programEnds,
    modelGoes,
};
constexpr int allEvents = static_cast<int>(Event::modelGoes) + 1;
constexpr std::array<Order, 3> orders = {Order::cloudFirst, Order::phoneFirst, Order::inTurn};
enum class Sends { done, underWay };

class Scenario : public test::RemovalWorld {
  public:
    explicit Scenario(Sends sends) {
        startSent();
        holdCalls();
        if (sends == Sends::underWay) beginSends();
        last_ = claudeAccount(path(".claude-c"));
        codexAccount_ = codexAccount("default");
        QObject::connect(&model(), &HelperModel::isRemovingChanged, &model(),
                         [this] { ++changes_; });
        removeEverything();
        EXPECT_TRUE(model().isRemoving());
    }

    // The removal, or the model, is over.
    bool isOver() { return !model_ || !model().isRemoving(); }

    void happen(Event event) {
        if (isOver()) return;
        switch (event) {
            case Event::pressAgain:
                return removeEverything();
            case Event::reload:
                return model().reload();
            case Event::refresh:
                return model().refresh();
            case Event::codexReading:
                if (codex_.isAsking()) answer(70);
                return;
            case Event::codexFailure:
                if (codex_.isAsking()) codex_.answer(test::codexFailure(Kind::server));
                return;
            case Event::poll:
                return poll();
            case Event::minutePasses:
                return advance(60s);
            case Event::clockJumps:
                return time_.setWallClock(now() - 48h);
            case Event::programEnds:
                return time_.cancelSleeps();
            case Event::modelGoes:
                return model_.reset();
            default:
                changeFolders(event);
        }
    }

    // What has to hold at each point of the removal.
    void expectShielded() {
        if (isOver()) return;
        expectAllDown();
        EXPECT_FALSE(model().removedEverything());
        EXPECT_EQ(model().failure(), std::nullopt);
        EXPECT_FALSE(test::exists(limitsFile("codex-default")));
    }

    void expectEnd() {
        EXPECT_FALSE(test::exists(limitsFile("codex-default")));
        if (!newFolder_.empty()) {
            EXPECT_FALSE(isRegistered(newFolder_));
        }
        if (isChanged_) {
            EXPECT_EQ(statusLine(path(".claude-b")), "~/bin/other");
        }
        EXPECT_EQ(statusLine(path(".claude-own")), "~/bin/mine");
        if (!model_) return;
        EXPECT_FALSE(model().isRemoving());
        EXPECT_EQ(changes_, 2);
        EXPECT_TRUE(model().removedEverything());
        EXPECT_EQ(model().failure(), std::nullopt);
        const bool isNewOneWanted = isPauseEnded_ && isRegistered(path(".claude-z"));
        expectAllDown(isNewOneWanted ? HelperModel::AccountKeys{"z"} : HelperModel::AccountKeys());
        for (const std::string& name : connectedNames())
            EXPECT_FALSE(isRegistered(path(name))) << name;
        EXPECT_EQ(model().claudeUsagePaused(), !isPauseEnded_);
        EXPECT_FALSE(services_.login.enabled);
        EXPECT_FALSE(hasCloudShare());
        EXPECT_FALSE(model().cloud().isEnabled());
        EXPECT_FALSE(model().cloud().isSending());
        if (!isLinkUsed_) {
            EXPECT_TRUE(model().phone().isPaused());
        }
        if (!isLinkShown_) {
            EXPECT_FALSE(hasPhoneShare());
        }
        for (const std::unique_ptr<test::TaskResult>& task : tasks_)
            EXPECT_EQ(task->summary(), "");
    }

  private:
    void changeFolders(Event event) {
        switch (event) {
            case Event::newFolder:
                newFolder_ = makeClaudeFolder(".claude-new");
                return model().refresh();
            case Event::folderOfOurs:
                makeRegisteredFolder(".claude-z");
                return model().refresh();
            case Event::folderGoes:
                std::filesystem::remove_all(path(".claude-b"));
                isChanged_ = false;
                return model().refresh();
            case Event::statusLineChanges:
                if (!test::exists(path(".claude-b"))) return;
                writeStatusLine(path(".claude-b"), "~/bin/other");
                isChanged_ = true;
                return;
            case Event::connectClaude:
                return model().connectClaude();
            case Event::disconnectClaude:
                return model().disconnectClaude(last_);
            case Event::addClaudeFolder:
                EXPECT_FALSE(model().addClaudeFolder(path(".claude-own")));
                return;
            case Event::newFigures:
                writeLimits("claude-a", 80, 90);
                services_.watch.changed();
                return advance(300ms);
            case Event::diskFills:
                defaults_.error = std::make_error_code(std::errc::no_space_on_device);
                return;
            default:
                changeSwitches(event);
        }
    }

    void changeSwitches(Event event) {
        switch (event) {
            case Event::connectCodex:
                return model().connectCodex();
            case Event::codexAccountOn:
                return model().setCodexAccount(codexAccount_, true);
            case Event::codexOn:
                return model().setCodexEnabled(true);
            case Event::cloudOn:
                return keep(model().setCloudEnabled(true));
            case Event::cloudOff:
                return keep(model().setCloudEnabled(false));
            case Event::endPause:
                isPauseEnded_ = true;
                return model().setClaudeUsagePaused(false);
            case Event::loginOn:
                return model().setLaunchAtLogin(true);
            case Event::loginOff:
                return model().setLaunchAtLogin(false);
            default:
                changeLink(event);
        }
    }

    void changeLink(Event event) {
        isLinkUsed_ = true;
        if (event == Event::rotateLink) return keep(model().phone().rotate());
        if (event == Event::endLink) return keep(model().phone().disconnect());
        isLinkShown_ = true;
        model().phone().showLink();
    }

    void keep(QCoro::Task<> task) {
        tasks_.push_back(std::make_unique<test::TaskResult>(std::move(task)));
    }

    ClaudeCodeSetup::Account last_;
    CodexAccounts::Account codexAccount_;
    std::vector<std::unique_ptr<test::TaskResult>> tasks_;
    std::string newFolder_;
    bool isChanged_ = false;
    bool isPauseEnded_ = false;
    bool isLinkUsed_ = false;
    bool isLinkShown_ = false;
    int changes_ = 0;  // of whether a removal is under way
};

// Runs a removal with those events at that point, and tells whether it gets as far as that.
bool run(Sends sends, Order order, int point, const std::vector<Event>& events) {
    Scenario scenario(sends);
    scenario.expectShielded();
    for (int step = 0; step < point; ++step) {
        if (!scenario.goOn(order)) return false;
        scenario.expectShielded();
    }
    if (scenario.isOver()) return false;
    for (const Event event : events) {
        scenario.happen(event);
        scenario.expectShielded();
    }
    while (scenario.goOn(order))
        scenario.expectShielded();
    scenario.expectEnd();
    return true;
}

std::string told(Order order, int point, const std::vector<Event>& events) {
    std::string text = "order " + std::to_string(static_cast<int>(order)) + ", point " +
                       std::to_string(point) + ", events";
    for (const Event event : events)
        text += ' ' + std::to_string(static_cast<int>(event));
    return text;
}

// Gives the number of points at which the removal waits.
int runAtEachPoint(Sends sends, Order order, const std::vector<Event>& events) {
    for (int point = 0;; ++point) {
        SCOPED_TRACE(told(order, point, events));
        if (!run(sends, order, point, events) || ::testing::Test::HasFailure()) return point;
    }
}

class HelperModelRemovalInterleavings : public ::testing::TestWithParam<Sends> {
    const test::FoldersInMemory inMemory_;
};

TEST_P(HelperModelRemovalInterleavings, WithNothingBesides) {
    for (const Order order : orders)
        EXPECT_GE(runAtEachPoint(GetParam(), order, {}), 9) << "three folders, twice three calls";
}

TEST_P(HelperModelRemovalInterleavings, WithOneEventAtEachPoint) {
    for (const Order order : orders) {
        for (int event = 0; event < allEvents && !HasFailure(); ++event)
            EXPECT_GE(runAtEachPoint(GetParam(), order, {static_cast<Event>(event)}), 9);
    }
}

TEST_P(HelperModelRemovalInterleavings, WithEventsAtRandomPoints) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int history = 0; history < 150 && !HasFailure(); ++history) {
        const Order order = orders.at(random.below(orders.size()));
        Scenario scenario(GetParam());
        std::string past = "events";
        do {
            if (!random.oneIn(3)) continue;
            auto event = static_cast<Event>(random.below(allEvents));
            if (event == Event::modelGoes && !random.oneIn(10)) event = Event::refresh;
            past += ' ' + std::to_string(static_cast<int>(event));
            SCOPED_TRACE(past);
            scenario.happen(event);
            scenario.expectShielded();
        } while (scenario.goOn(order));
        SCOPED_TRACE(past);
        scenario.drain(order);
        scenario.expectEnd();
    }
}

INSTANTIATE_TEST_SUITE_P(While, HelperModelRemovalInterleavings,
                         ::testing::Values(Sends::done, Sends::underWay), [](const auto& sends) {
                             return sends.param == Sends::done ? "NothingIsSent"
                                                               : "SendsAreUnderWay";
                         });

}  // namespace
}  // namespace brimwatch
