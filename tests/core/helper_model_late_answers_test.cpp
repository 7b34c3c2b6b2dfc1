// Answers that come when the question is no longer wanted: neither status nor reading nor file.

#include <gmock/gmock.h>

#include <filesystem>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

enum class Answer { reading, failure };

class HelperModelLateAnswers : public test::AccountsFixture,
                               public ::testing::WithParamInterface<Answer> {
  protected:
    // "alpha" is being asked; the default account waits.
    void ask() {
        makeCodexFolder(".codex-alpha");
        makeCodexFolder(".codex");
        start();
        poll();
        ASSERT_THAT(askedKeys(), ElementsAre("alpha"));
    }
    void answerLate() {
        if (GetParam() == Answer::reading) {
            answer(10);
        } else {
            codex_.answer(test::codexFailure(Kind::server));
        }
    }
    void expectDropped() {
        EXPECT_FALSE(test::exists(limitsFile("codex-alpha")));
        EXPECT_FALSE(model().receivedCodex().contains("alpha"));
        EXPECT_FALSE(model().codexAccountStatuses().contains(path(".codex-alpha")));
    }
};

TEST_P(HelperModelLateAnswers, AreTakenIfNothingChanged) {
    ask();
    answerLate();
    EXPECT_NE(codexStatusOf("alpha"), "");
    EXPECT_EQ(test::exists(limitsFile("codex-alpha")), GetParam() == Answer::reading);
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenCodexWasSwitchedOff) {
    ask();
    model().setCodexEnabled(false);
    const SignalCount changes(model(), &HelperModel::codexStatusChanged);
    answerLate();
    expectDropped();
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_FALSE(model().pollingCodex());
    EXPECT_THAT(askedKeys(), ElementsAre("alpha"));
    EXPECT_EQ(changes.count(), 0);
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenCodexWasSwitchedOffAndOn) {
    ask();
    model().setCodexEnabled(false);
    model().setCodexEnabled(true);
    answerLate();
    expectDropped();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
}

TEST_P(HelperModelLateAnswers, AreDroppedDuringARemoval) {
    makeRegisteredFolder(".claude-a");
    makeRegisteredFolder(".claude-b");
    ask();
    removeEverything();
    while (isRegistered(path(".claude-a")))
        ASSERT_TRUE(time_.wakeNext());
    ASSERT_TRUE(model().isRemoving()) << "between two accounts";
    answerLate();
    expectDropped();
    EXPECT_FALSE(model().pollingCodex());
    settle();
    EXPECT_FALSE(model().isRemoving());
    expectDropped();
}

TEST_P(HelperModelLateAnswers, AreDroppedAfterARemoval) {
    ask();
    removeEverything();
    settle();
    ASSERT_TRUE(model().removedEverything());
    answerLate();
    expectDropped();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha"));
    EXPECT_FALSE(model().pollingCodex());
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenTheAccountWasSwitchedOff) {
    ask();
    model().setCodexAccount(codexAccount("alpha"), false);
    answerLate();
    expectDropped();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenTheAccountWasSwitchedOffAndOn) {
    ask();
    const CodexAccounts::Account alpha = codexAccount("alpha");
    model().setCodexAccount(alpha, false);
    model().setCodexAccount(alpha, true);
    answerLate();
    expectDropped();
    answer(20);
    settle();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default", "alpha"));
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenAnotherAccountWasSwitched) {
    ask();
    model().setCodexAccount(codexAccount("default"), false);
    answerLate();
    expectDropped();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha"));
    EXPECT_FALSE(model().pollingCodex());
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenCodexWasConnectedAnew) {
    ask();
    model().connectCodex();
    answerLate();
    expectDropped();
    answer(20);
    settle();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default", "alpha"));
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenAFolderWasAdded) {
    ask();
    test::writeFile(folder_.file("other/config.toml"), "");
    ASSERT_TRUE(model().addCodexFolder(folder_.file("other")));
    answerLate();
    expectDropped();
}

TEST_P(HelperModelLateAnswers, AreDroppedWhenTheFolderIsGone) {
    ask();
    std::filesystem::remove_all(path(".codex-alpha"));
    model().refresh();
    answerLate();
    expectDropped();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
}

TEST_P(HelperModelLateAnswers, AreTakenAsLongAsNobodySawThatTheFolderIsGone) {
    ask();
    std::filesystem::remove_all(path(".codex-alpha"));
    answerLate();
    EXPECT_TRUE(model().codexAccountStatuses().contains(path(".codex-alpha")));
    EXPECT_EQ(test::exists(limitsFile("codex-alpha")), GetParam() == Answer::reading);
}

TEST_P(HelperModelLateAnswers, AreTakenOfADefaultFolderThatIsGone) {
    start();
    poll();
    std::filesystem::remove_all(path(".codex"));
    model().refresh();
    answerLate();
    EXPECT_NE(codexStatusOf("default"), "");
}

TEST_P(HelperModelLateAnswers, AreTakenOfAManualFolderThatIsGone) {
    const std::string folder = folder_.file("manual");
    test::writeFile(folder + "/config.toml", "");
    start();
    model().setCodexEnabled(false);
    ASSERT_TRUE(model().addCodexFolder(folder));
    settle();
    ASSERT_EQ(codex_.openCount(), 1U);
    std::filesystem::remove_all(folder);
    model().refresh();
    answerLate();
    EXPECT_TRUE(model().codexAccountStatuses().contains(folder));
}

TEST_P(HelperModelLateAnswers, AreTakenAfterARefreshAndARequest) {
    ask();
    model().refresh();
    model().reload();
    poll();
    answerLate();
    EXPECT_NE(codexStatusOf("alpha"), "");
}

TEST_P(HelperModelLateAnswers, OfAModelThatIsGoneLeaveNothingBehind) {
    ask();
    model_.reset();
    answerLate();
    settle();
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_FALSE(test::exists(limitsFile("codex-alpha")));
}

TEST_P(HelperModelLateAnswers, KeepTheStatusOfCodexAsItWasWhenCodexIsOff) {
    ask();
    model().setCodexEnabled(false);
    answerLate();
    EXPECT_EQ(model().codexStatus(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Each, HelperModelLateAnswers,
                         ::testing::Values(Answer::reading, Answer::failure), [](const auto& each) {
                             return each.param == Answer::reading ? "Reading" : "Failure";
                         });

}  // namespace
}  // namespace brimwatch
