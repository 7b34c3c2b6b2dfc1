// Disks that fail while accounts of Claude Code are connected and disconnected: at each step once,
// and at every write.

#include <gmock/gmock.h>

#include <functional>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::messageOf;
using ::testing::StartsWith;

constexpr const char* own = "~/bin/mine";

enum class Wanted { connected, restored };

// Two folders, "a" and "b", with a status line of the user's own in "a" before anything else.
class Attempt : public test::AccountsFixture {
  public:
    void TestBody() override {}

    void makeFolders(Wanted wanted) {
        for (const std::string& folder : {a, b}) {
            makeClaudeFolder(folder == a ? ".claude-a" : ".claude-b");
            if (folder == a) writeStatusLine(a, own);
        }
        defaults_.put("claudeAutoConnect", R"({"enabled":false,"declined":[]})");
        start();
        if (wanted == Wanted::restored) {
            model().connectClaude();
            model().setUsageName("claude-a", "A");
        }
    }

    bool isConnected(const std::string& folder) const {
        return statusLine(folder) == ourStatusLine(folder == a ? "a" : "b");
    }
    bool isRestored(const std::string& folder) const {
        return statusLine(folder) == (folder == a ? own : "");
    }
    // The file is never half written and never loses its own value.
    void expectWhole() const {
        EXPECT_TRUE(isConnected(a) || isRestored(a)) << statusLine(a);
        EXPECT_TRUE(isConnected(b) || isRestored(b)) << statusLine(b);
        if (!isConnected(a)) return;
        EXPECT_THAT(test::readFile(a + "/settings.json"), ::testing::HasSubstr(own));
    }

    HelperModel& helper() { return model(); }
    test::ScriptedFileSystem& files() { return files_; }
    std::string value(std::string_view key) const { return stored(key); }
    ClaudeCodeSetup::Account account(const std::string& folder) { return claudeAccount(folder); }
    void removeAll() {
        removeEverything();
        settle();
    }

    const std::string a = path(".claude-a");
    const std::string b = path(".claude-b");
};

struct Operation {
    const char* name;
    Wanted wanted;
    std::function<void(Attempt&)> run;
    std::string failureStart;
    // What `claudeAutoConnect` holds afterwards, unless nothing was found to work on.
    std::function<std::string(Attempt&)> autoConnect;
    bool touchesBoth = false;
};

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = {
        {"Connecting", Wanted::connected,
         [](Attempt& attempt) { attempt.helper().connectClaude(); },
         "Claude Code 설정을 바꾸지 못했어요:\n",
         [](Attempt&) { return R"({"declined":[],"enabled":true})"; }, true},
        {"Adding", Wanted::connected,
         [](Attempt& attempt) { attempt.helper().addClaudeFolder(attempt.a); },
         "Claude Code 설정을 바꾸지 못했어요: ",
         [](Attempt&) { return R"({"declined":[],"enabled":false})"; }},
        {"Disconnecting", Wanted::restored,
         [](Attempt& attempt) { attempt.helper().disconnectClaude(attempt.account(attempt.a)); },
         "Claude Code 설정을 되돌리지 못했어요: ",
         [](Attempt& attempt) {
             return R"({"declined":[")" + attempt.a + R"("],"enabled":true})";
         }},
        {"Removing", Wanted::restored, [](Attempt& attempt) { attempt.removeAll(); },
         "일부를 해제하지 못했어요. 다시 눌러 주세요.\n",
         [](Attempt& attempt) {
             return R"({"declined":[")" + attempt.a + R"(",")" + attempt.b +
                    R"("],"enabled":false})";
         },
         true},
    };
    return all;
}

bool isReached(const Operation& operation, const Attempt& attempt, const std::string& folder) {
    return operation.wanted == Wanted::connected ? attempt.isConnected(folder)
                                                 : attempt.isRestored(folder);
}

// Whether the operation found nothing to work on, and so left every choice alone.
bool isRefused(Attempt& attempt) {
    const std::string failure = attempt.helper().failure().value_or("");
    return failure.starts_with("Claude Code 계정을 찾지 못했어요.") ||
           failure.starts_with("Claude Code 설정 폴더를 골라 주세요.");
}

class HelperModelConnectionFailures : public ::testing::TestWithParam<Operation> {
  protected:
    static void expectConsistent(const Operation& operation, Attempt& attempt) {
        attempt.expectWhole();
        if (isRefused(attempt)) return;
        EXPECT_EQ(attempt.value("claudeAutoConnect"), operation.autoConnect(attempt));
        if (attempt.helper().failure()) {
            EXPECT_THAT(*attempt.helper().failure(), StartsWith(operation.failureStart));
            return;
        }
        EXPECT_TRUE(isReached(operation, attempt, attempt.a));
        EXPECT_TRUE(!operation.touchesBoth || isReached(operation, attempt, attempt.b));
    }
    // Of a run in which nothing fails.
    static std::size_t stepCount(const Operation& operation) {
        Attempt attempt;
        attempt.makeFolders(operation.wanted);
        const std::size_t first = attempt.files().steps().size();
        operation.run(attempt);
        return attempt.files().steps().size() - first;
    }
    static void expectSuccess(const Operation& operation, Attempt& attempt) {
        operation.run(attempt);
        EXPECT_EQ(attempt.helper().failure(), std::nullopt);
        expectConsistent(operation, attempt);
    }
    const test::FoldersInMemory inMemory_;
};

TEST_P(HelperModelConnectionFailures, OfEachStepLeaveFilesWholeChoicesStoredAndAnotherTryOpen) {
    const std::size_t steps = stepCount(GetParam());
    EXPECT_GT(steps, 20U);
    for (std::size_t step = 0; step < steps && !HasFailure(); ++step) {
        Attempt attempt;
        attempt.makeFolders(GetParam().wanted);
        const std::size_t first = attempt.files().steps().size();
        attempt.files().failAtStep(first + step, std::errc::no_space_on_device);
        GetParam().run(attempt);
        SCOPED_TRACE(attempt.files().steps().at(first + step));
        expectConsistent(GetParam(), attempt);
        attempt.files().failNothing();
        attempt.helper().refresh();
        expectSuccess(GetParam(), attempt);
    }
}

TEST_P(HelperModelConnectionFailures, OfEveryWriteAreToldAndAnotherTrySucceeds) {
    for (const char* step : {"makeTemporary", "write", "synchronize", "replace"}) {
        SCOPED_TRACE(step);
        for (const std::errc error :
             {std::errc::no_space_on_device, std::errc::read_only_file_system,
              std::errc::permission_denied, std::errc::io_error}) {
            Attempt attempt;
            attempt.makeFolders(GetParam().wanted);
            attempt.files().failEveryStepNamed(step, error);
            GetParam().run(attempt);
            ASSERT_NE(attempt.helper().failure(), std::nullopt);
            const std::string message = messageOf(error);
            EXPECT_THAT(*attempt.helper().failure(),
                        GetParam().touchesBoth
                            ? GetParam().failureStart + "a: " + message + "\nb: " + message
                            : GetParam().failureStart + message);
            EXPECT_FALSE(isReached(GetParam(), attempt, attempt.a));
            expectConsistent(GetParam(), attempt);
            attempt.files().failNothing();
            expectSuccess(GetParam(), attempt);
        }
    }
}

TEST(HelperModelConnectionFailure, OfOneFolderDoesNotHinderTheOther) {
    for (const Operation& operation : operations()) {
        if (!operation.touchesBoth) continue;
        SCOPED_TRACE(operation.name);
        Attempt attempt;
        attempt.makeFolders(operation.wanted);
        attempt.files().failEvery("makeTemporary " + attempt.a, std::errc::read_only_file_system);
        operation.run(attempt);
        EXPECT_EQ(attempt.helper().failure(),
                  operation.failureStart + "a: " + messageOf(std::errc::read_only_file_system));
        EXPECT_FALSE(isReached(operation, attempt, attempt.a));
        EXPECT_TRUE(isReached(operation, attempt, attempt.b));
        EXPECT_EQ(attempt.value("claudeAutoConnect"), operation.autoConnect(attempt));
    }
}

INSTANTIATE_TEST_SUITE_P(While, HelperModelConnectionFailures, ::testing::ValuesIn(operations()),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace brimwatch
