#include "codex/codex_accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <tuple>

#include "harness/environment_list.h"
#include "harness/random.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"
#include "support/path_digest.h"
#include "support/paths.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

using Account = CodexAccounts::Account;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::SizeIs;

// A folder whose name alone does not tell it apart.
Account hashed(const std::string& directory, const std::string& name) {
    return {.directory = directory, .name = name, .key = name + '-' + pathDigest(directory)};
}

class CodexFolders : public ::testing::Test {
  protected:
    // Without symbolic links in it, so that it is its own resolved form.
    std::string home() const { return std::filesystem::canonical(folder_.path()); }
    std::string below(const std::string& name) const { return joinPath(home(), name); }

    void makeFolder(const std::string& name) { std::filesystem::create_directories(below(name)); }
    void logIn(const std::string& name) { test::writeFile(below(name + "/auth.json"), "{}"); }
    void link(const std::string& name, const std::string& target) {
        std::filesystem::create_symlink(target, below(name));
    }

    std::vector<Account> accounts(const std::vector<std::string>& manual = {}) {
        return CodexAccounts::accounts(files_, home(), manual, environment_.view());
    }
    std::vector<std::string> keys(const std::vector<std::string>& manual = {}) {
        std::vector<std::string> keys;
        for (const Account& account : accounts(manual))
            keys.push_back(account.key);
        return keys;
    }
    Account account(const std::string& folder) {
        return CodexAccounts::account(files_, folder, home());
    }
    // Of a folder in the home folder.
    Account standard(const std::string& folderName, const std::string& name) {
        return {.directory = below(folderName), .name = name, .key = name};
    }

    test::TemporaryFolder folder_;
    PosixFileSystem files_;
    test::EnvironmentList environment_ = {};
};
using CodexAccount = CodexFolders;
using CodexFolderByHand = CodexFolders;

TEST_F(CodexFolders, AreTheDefaultOneAloneWhereThereIsNone) {
    EXPECT_THAT(accounts(), ElementsAre(standard(".codex", "default")));
}

TEST_F(CodexFolders, AreThoseOfTheHomeFolderThatHoldALogin) {
    logIn(".codex");
    logIn(".codex-work");
    logIn(".codex-한글");
    EXPECT_THAT(accounts(),
                ElementsAre(standard(".codex", "default"), standard(".codex-work", "work"),
                            standard(".codex-한글", "한글")));
}

TEST_F(CodexFolders, DoNotCountWithoutALogin) {
    makeFolder(".codex-empty");
    test::writeFile(below(".codex-backup/config.toml"), "");
    EXPECT_THAT(keys(), ElementsAre("default"));
}

TEST_F(CodexFolders, DoNotCountUnderAnotherName) {
    for (const char* name : {"codex", ".codex.old", ".codexwork", ".codex_work", ".Codex-work",
                             "x.codex-work", ".claude-work"}) {
        logIn(name);
    }
    EXPECT_THAT(keys(), ElementsAre("default"));
}

TEST_F(CodexFolders, DoNotCountWhereTheyAreFiles) {
    test::writeFile(below(".codex-notes"), "");
    ASSERT_EQ(::mkfifo(below(".codex-pipe").c_str(), 0600), 0);
    EXPECT_THAT(keys(), ElementsAre("default"));
}

TEST_F(CodexFolders, TakeTheDefaultOneFromTheEnvironment) {
    environment_ = {{"CODEX_HOME", "/no-such-folder/y"}};
    EXPECT_THAT(accounts(), ElementsAre(hashed("/no-such-folder/y", "y")));
}

TEST_F(CodexFolders, StillFindTheFormerDefaultOneWhereItHoldsALogin) {
    environment_ = {{"CODEX_HOME", "/no-such-folder/y"}};
    logIn(".codex");
    EXPECT_THAT(accounts(),
                ElementsAre(standard(".codex", "default"), hashed("/no-such-folder/y", "y")));
}

TEST_F(CodexFolders, TakeTheDefaultOneOfTheHomeFolderWhereTheEnvironmentNamesNone) {
    environment_ = {{"CODEX_HOME", ""}};
    EXPECT_THAT(accounts(), ElementsAre(standard(".codex", "default")));
}

TEST_F(CodexFolders, TakeARelativeDefaultOneFromTheWorkingFolder) {
    environment_ = {{"CODEX_HOME", "no-such-folder"}};
    EXPECT_THAT(accounts(), ElementsAre(hashed(std::filesystem::current_path() / "no-such-folder",
                                               "no-such-folder")));
}

TEST_F(CodexFolders, AreStandardWhereTheEnvironmentNamesOneOfTheHomeFolder) {
    environment_ = {{"CODEX_HOME", below("x/../.codex-work/")}};
    EXPECT_THAT(accounts(), ElementsAre(standard(".codex-work", "work")));
}

TEST_F(CodexFolders, AreListedOnceHoweverTheyAreReached) {
    logIn(".codex");
    logIn(".codex-work");
    link(".codex-link", ".codex-work");
    EXPECT_THAT(accounts({below(".codex"), below(".codex"), below(".codex-link"),
                          below(".codex-work/../.codex-work/")}),
                ElementsAre(standard(".codex", "default"), standard(".codex-work", "work")));
}

TEST_F(CodexFolders, OfOneNameAreSortedByPath) {
    EXPECT_THAT(accounts({"/no-such-folder/b/work", "/no-such-folder/a/work"}),
                ElementsAre(standard(".codex", "default"), hashed("/no-such-folder/a/work", "work"),
                            hashed("/no-such-folder/b/work", "work")));
}

TEST_F(CodexFolders, AreSortedByNameAndNotByPath) {
    logIn(".codex-a");
    EXPECT_THAT(keys({"/a-no-such-folder/z"}),
                ElementsAre("a", "default", "z-" + pathDigest("/a-no-such-folder/z")));
}

TEST_F(CodexFolders, KeepAManualOneThatHasGone) {
    makeFolder("mine");
    const std::vector<Account> before = accounts({below("mine")});
    std::filesystem::remove(below("mine"));
    EXPECT_EQ(accounts({below("mine")}), before);
    EXPECT_THAT(before, Contains(hashed(below("mine"), "mine")));
}

TEST_F(CodexFolders, AreFoundBehindSymbolicLinks) {
    makeFolder("data");
    logIn("data/store");
    link(".codex-store", below("data/store"));
    link(".codex-gone", below("data/gone"));
    link(".codex-loop", ".codex-loop");
    EXPECT_THAT(accounts(),
                ElementsAre(standard(".codex", "default"), hashed(below("data/store"), "store")));
}

TEST_F(CodexFolders, AreTheSameForAHomeFolderBehindASymbolicLink) {
    makeFolder("real");
    logIn("real/.codex-work");
    link("moved", "real");
    const auto found = CodexAccounts::accounts(files_, below("moved/"), {}, environment_.view());
    EXPECT_THAT(found, ElementsAre(standard("real/.codex", "default"),
                                   standard("real/.codex-work", "work")));
}

TEST_F(CodexFolders, CountWhereTheLoginIsASymbolicLinkButNotADanglingOne) {
    test::writeFile(below("login"), "{}");
    makeFolder(".codex-linked");
    makeFolder(".codex-dangling");
    link(".codex-linked/auth.json", below("login"));
    link(".codex-dangling/auth.json", below("gone"));
    EXPECT_THAT(keys(), ElementsAre("default", "linked"));
}

TEST_F(CodexFolders, AreTheDefaultAndTheManualOnesWhereTheHomeFolderCanNotBeListed) {
    logIn(".codex-work");
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(0, std::errc::permission_denied);
    const auto found =
        CodexAccounts::accounts(failing, home(), {"/no-such-folder/b"}, environment_.view());
    EXPECT_EQ(failing.steps().front(), "entries " + home());
    EXPECT_THAT(found,
                ElementsAre(hashed("/no-such-folder/b", "b"), standard(".codex", "default")));
}

TEST_F(CodexFolders, AreListedWithoutTheOneWhoseAttributesCanNotBeRead) {
    logIn(".codex-work");
    test::ScriptedFileSystem recording(files_);
    CodexAccounts::accounts(recording, home(), {}, environment_.view());
    const auto status = std::find(recording.steps().begin(), recording.steps().end(),
                                  "status " + below(".codex-work"));
    ASSERT_NE(status, recording.steps().end());
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(static_cast<std::size_t>(status - recording.steps().begin()),
                       std::errc::permission_denied);
    EXPECT_THAT(CodexAccounts::accounts(failing, home(), {}, environment_.view()),
                ElementsAre(standard(".codex", "default")));
}

TEST_F(CodexFolders, SurviveTheFailureOfAnyStep) {
    logIn(".codex");
    logIn(".codex-work");
    link(".codex-link", ".codex-work");
    const std::vector<std::string> manual = {below(".codex-link"), "/no-such-folder/b"};
    test::ScriptedFileSystem recording(files_);
    CodexAccounts::accounts(recording, home(), manual, environment_.view());
    for (std::size_t step = 0; step < recording.steps().size(); ++step) {
        SCOPED_TRACE(recording.steps()[step]);
        test::ScriptedFileSystem failing(files_);
        failing.failAtStep(step, std::errc::io_error);
        const auto found = CodexAccounts::accounts(failing, home(), manual, environment_.view());
        EXPECT_THAT(found, Contains(hashed("/no-such-folder/b", "b")));
        EXPECT_THAT(found, Contains(::testing::Field(&Account::name, "default")));
    }
}

TEST_F(CodexFolders, MayHaveNamesThatAreNotUtf8) {
    logIn(".codex-\xFF");
    logIn(".codex-a\xC3(b");
    EXPECT_THAT(accounts(),
                ElementsAre(hashed(below(".codex-a\xC3(b"), "a--b"), standard(".codex", "default"),
                            hashed(below(".codex-\xFF"), "default")));
}

TEST_F(CodexFolders, MayBeThousands) {
    for (int index = 0; index < 500; ++index)
        logIn(".codex-" + std::to_string(index));
    for (int index = 0; index < 1000; ++index)
        link(".codex-link" + std::to_string(index), ".codex-" + std::to_string(index));
    std::vector<std::string> manual;
    for (int index = 0; index < 4000; ++index)
        manual.push_back("/no-such-folder/" + std::to_string(index));
    const std::vector<Account> found = accounts(manual);
    EXPECT_THAT(found, SizeIs(1 + 500 + 4000));
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end(), [](const Account& a, const Account& b) {
        return std::tie(a.name, a.directory) < std::tie(b.name, b.directory);
    }));
}

TEST_F(CodexFolders, SurviveManualPathsOfAnyKind) {
    EXPECT_THAT(accounts({"", "/", ".", "..", "//", "/../..", std::string(100'000, 'a'),
                          "/\xFF\xFE", "a/../../b"}),
                Contains(hashed("/", "default")));
}

TEST_F(CodexFolders, HaveKeysOfTheirOwnAndOfFileNameCharacters) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::vector<std::string> pieces = {"-", ".", " ", "a", "A", "한", "\xFF", "codex", "'"};
    for (int index = 0; index < 150; ++index) {
        std::string name = ".codex-";
        for (std::size_t count = random.below(6); count > 0; --count)
            name += pieces[random.below(pieces.size())];
        logIn(name);
    }
    std::set<std::string> seen;
    for (const std::string& key : keys()) {
        EXPECT_TRUE(seen.insert(key).second) << key;
        EXPECT_FALSE(key.empty());
        EXPECT_TRUE(holdsOnlyAccountKeyCharacters(key)) << key;
    }
}

TEST_F(CodexAccount, OfTheDefaultFolderIsDefault) {
    EXPECT_EQ(account(below(".codex")), standard(".codex", "default"));
}

TEST_F(CodexAccount, OfANamedFolderHasItsName) {
    EXPECT_EQ(account(below(".codex-work")), standard(".codex-work", "work"));
    EXPECT_EQ(account(below(".codex-한글")), standard(".codex-한글", "한글"));
}

TEST_F(CodexAccount, OfAFolderElsewhereCarriesTheDigestOfItsPath) {
    EXPECT_EQ(account("/no-such-folder/y"), hashed("/no-such-folder/y", "y"));
    EXPECT_EQ(account("/no-such-folder/.codex"), hashed("/no-such-folder/.codex", "default"));
    EXPECT_EQ(account("/no-such-folder/.codex-work"),
              hashed("/no-such-folder/.codex-work", "work"));
    EXPECT_EQ(account(below("deep/.codex")), hashed(below("deep/.codex"), "default"));
}

TEST_F(CodexAccount, KeyEndsWithTwelveLowerCaseHexadecimalDigits) {
    // The beginning of `printf %s /no-such-folder/y | sha256sum`.
    EXPECT_EQ(account("/no-such-folder/y").key, "y-29e552a13783");
}

TEST_F(CodexAccount, WhoseNameHadToBeCleanedStaysApartFromTheOneOfThatName) {
    EXPECT_EQ(account(below(".codex-a b")), hashed(below(".codex-a b"), "a-b"));
    EXPECT_EQ(account(below(".codex-a-b")), standard(".codex-a-b", "a-b"));
}

TEST_F(CodexAccount, NamedDefaultByItsFolderStaysApartFromTheDefaultOne) {
    EXPECT_EQ(account(below(".codex-default")), hashed(below(".codex-default"), "default"));
    EXPECT_EQ(account(below(".codex-")), hashed(below(".codex-"), "default"));
    EXPECT_EQ(account(below("codex")), hashed(below("codex"), "default"));
}

TEST_F(CodexAccount, OfAnotherFolderOfTheHomeFolderIsNotStandard) {
    EXPECT_EQ(account(below("work")), hashed(below("work"), "work"));
    EXPECT_EQ(account(below(".codex-.work")), hashed(below(".codex-.work"), "work"));
}

TEST_F(CodexAccount, IsThatOfTheFolderBehindASymbolicLink) {
    makeFolder("data");
    link(".codex", below("data"));
    EXPECT_EQ(account(below(".codex")), hashed(below("data"), "data"));
}

TEST_F(CodexFolderByHand, NeedsALoginOrAConfiguration) {
    logIn("login");
    test::writeFile(below("configured/config.toml"), "");
    makeFolder("empty");
    EXPECT_TRUE(CodexAccounts::isCodexFolder(files_, below("login")));
    EXPECT_TRUE(CodexAccounts::isCodexFolder(files_, below("configured/")));
    EXPECT_FALSE(CodexAccounts::isCodexFolder(files_, below("empty")));
}

TEST_F(CodexFolderByHand, HasToBeAFolder) {
    test::writeFile(below("file"), "");
    EXPECT_FALSE(CodexAccounts::isCodexFolder(files_, below("file")));
    EXPECT_FALSE(CodexAccounts::isCodexFolder(files_, below("gone")));
    EXPECT_FALSE(CodexAccounts::isCodexFolder(files_, ""));
}

TEST_F(CodexFolderByHand, MayBeReachedThroughASymbolicLink) {
    logIn("login");
    link("link", "login");
    link("gone-link", "gone");
    EXPECT_TRUE(CodexAccounts::isCodexFolder(files_, below("link")));
    EXPECT_FALSE(CodexAccounts::isCodexFolder(files_, below("gone-link")));
}

TEST_F(CodexFolderByHand, IsRefusedWhereItsAttributesCanNotBeRead) {
    logIn("login");
    for (const std::size_t step : {1U, 2U}) {
        test::ScriptedFileSystem failing(files_);
        failing.failAtStep(step, std::errc::permission_denied);
        EXPECT_FALSE(CodexAccounts::isCodexFolder(failing, below("login"))) << step;
        EXPECT_TRUE(failing.steps().at(step).starts_with("status"));
    }
}

TEST_F(CodexFolderByHand, IsNeverOpened) {
    logIn(".codex");
    test::writeFile(below(".codex/config.toml"), "");
    test::ScriptedFileSystem recording(files_);
    CodexAccounts::isCodexFolder(recording, below(".codex"));
    CodexAccounts::accounts(recording, home(), {below(".codex")}, environment_.view());
    EXPECT_THAT(recording.steps(), Each(Not(::testing::StartsWith("read "))));
    EXPECT_THAT(recording.steps(), Not(Contains("entries " + below(".codex"))));
}

}  // namespace
}  // namespace brimwatch
