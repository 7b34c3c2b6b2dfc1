#include "claude/claude_tier_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr std::string_view maximum =
    R"({"oauthAccount":{"organizationRateLimitTier":"default_claude_max_20x"}})";

class ClaudeTierReaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        reader_.read = [this, readFile = reader_.read](const std::string& path) {
            ++reads_;
            return readFile(path);
        };
    }

    std::optional<std::string> tier() { return reader_.tier(path_); }

    std::filesystem::file_time_type date() const { return std::filesystem::last_write_time(path_); }
    void setDate(std::filesystem::file_time_type date) {
        std::filesystem::last_write_time(path_, date);
    }

    test::TemporaryFolder folder_;
    std::string path_ = folder_.file(".claude.json");
    PosixFileSystem files_;
    int reads_ = 0;
    ClaudeTierReader reader_{files_};
};

TEST(ClaudeTier, IsTheOrganisationsInTheFileThatClaudeCodeWrites) {
    EXPECT_EQ(ClaudeTierReader::parseTier(test::testData("claude-2.1.329-dot-claude.json")),
              "default_claude_max_20x");
}

TEST(ClaudeTier, IsTheUsersRatherThanTheOrganisations) {
    EXPECT_EQ(ClaudeTierReader::parseTier(
                  R"({"oauthAccount":{"userRateLimitTier":"u","organizationRateLimitTier":"o"}})"),
              "u");
}

TEST(ClaudeTier, OfTheOrganisationIsNotHiddenByAnEmptyOneOrOneOfAnotherType) {
    for (const char* user : {R"("")", "20", "null", "true", "{}", R"(["u"])"}) {
        EXPECT_EQ(ClaudeTierReader::parseTier(R"({"oauthAccount":{"userRateLimitTier":)" +
                                              std::string(user) +
                                              R"(,"organizationRateLimitTier":"o"}})"),
                  "o")
            << user;
    }
}

TEST(ClaudeTier, IsLookedForInTheAccountOnly) {
    for (const char* account : {R"("text")", "null", "[]", "1"}) {
        EXPECT_EQ(ClaudeTierReader::parseTier(R"({"userRateLimitTier":"u","oauthAccount":)" +
                                              std::string(account) + "}"),
                  std::nullopt)
            << account;
    }
    EXPECT_EQ(ClaudeTierReader::parseTier(R"({"userRateLimitTier":"u"})"), std::nullopt);
}

TEST(ClaudeTier, IsAbsentWhereNeitherKeyHoldsAText) {
    EXPECT_EQ(ClaudeTierReader::parseTier(R"({"oauthAccount":{}})"), std::nullopt);
    EXPECT_EQ(ClaudeTierReader::parseTier(
                  R"({"oauthAccount":{"userRateLimitTier":"","organizationRateLimitTier":""}})"),
              std::nullopt);
}

TEST(ClaudeTier, IsAbsentInWhatIsNoJsonObject) {
    for (const std::string_view text :
         {"", "[]", "null", "{", "\"x\"", "{\"oauthAccount\":\xFF}"}) {
        EXPECT_EQ(ClaudeTierReader::parseTier(text), std::nullopt) << text;
    }
}

TEST(ClaudeTier, IsAbsentInEveryFileThatIsCutShort) {
    const std::string whole = test::testData("claude-2.1.329-dot-claude.json");
    const std::size_t last = whole.find_last_of('}');
    for (std::size_t length = 0; length <= last; ++length) {
        EXPECT_EQ(ClaudeTierReader::parseTier(whole.substr(0, length)), std::nullopt) << length;
    }
}

TEST_F(ClaudeTierReaderTest, AnUnchangedFileIsReadOnce) {
    test::writeFile(path_, maximum);
    EXPECT_EQ(tier(), "default_claude_max_20x");
    EXPECT_EQ(tier(), "default_claude_max_20x");
    EXPECT_EQ(reads_, 1);
}

TEST_F(ClaudeTierReaderTest, AnUnchangedFileWithoutATierIsReadOnce) {
    test::writeFile(path_, "{}");
    EXPECT_EQ(tier(), std::nullopt);
    EXPECT_EQ(tier(), std::nullopt);
    EXPECT_EQ(reads_, 1);
    EXPECT_TRUE(reader_.entries.contains(path_));
}

TEST_F(ClaudeTierReaderTest, AnUnchangedFileCostsOneLookAtItsAttributes) {
    test::writeFile(path_, maximum);
    test::ScriptedFileSystem recording(files_);
    ClaudeTierReader reader(recording);
    EXPECT_EQ(reader.tier(path_), "default_claude_max_20x");
    EXPECT_EQ(reader.tier(path_), "default_claude_max_20x");
    EXPECT_EQ(recording.steps(),
              (std::vector<std::string>{"status " + path_, "read " + path_, "status " + path_}));
}

TEST_F(ClaudeTierReaderTest, AFileWithANewDateIsReadAgainEvenWithTheSameContents) {
    test::writeFile(path_, maximum);
    tier();
    setDate(date() + std::chrono::nanoseconds(1));
    EXPECT_EQ(tier(), "default_claude_max_20x");
    EXPECT_EQ(reads_, 2);
}

TEST_F(ClaudeTierReaderTest, AFileWhoseDateGoesBackIsReadAgain) {
    test::writeFile(path_, "{}");
    tier();
    const auto former = date();
    test::writeFile(path_, maximum);
    setDate(former - std::chrono::hours(1));
    EXPECT_EQ(tier(), "default_claude_max_20x");
}

TEST_F(ClaudeTierReaderTest, AFileThatWentAwayIsForgottenAndReadAfreshWhenItReturns) {
    test::writeFile(path_, maximum);
    tier();
    const auto former = date();
    std::filesystem::remove(path_);
    EXPECT_EQ(tier(), std::nullopt);
    EXPECT_TRUE(reader_.entries.empty());
    test::writeFile(path_, R"({"oauthAccount":{"userRateLimitTier":"other"}})");
    setDate(former);
    EXPECT_EQ(tier(), "other");
    EXPECT_EQ(reads_, 2);
}

TEST_F(ClaudeTierReaderTest, AFileThatCantBeReadIsNotTriedAgainUntilItsDateChanges) {
    test::writeFile(path_, maximum);
    reader_.read = [this](const std::string&) {
        ++reads_;
        return std::optional<std::string>();
    };
    EXPECT_EQ(tier(), std::nullopt);
    EXPECT_EQ(tier(), std::nullopt);
    EXPECT_EQ(reads_, 1);
    setDate(date() + std::chrono::seconds(1));
    EXPECT_EQ(tier(), std::nullopt);
    EXPECT_EQ(reads_, 2);
}

TEST_F(ClaudeTierReaderTest, AFolderAPipeAndADanglingLinkHaveNoTier) {
    std::filesystem::create_directory(path_);
    EXPECT_EQ(tier(), std::nullopt);
    std::filesystem::remove(path_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(tier(), std::nullopt);
    std::filesystem::remove(path_);
    std::filesystem::create_symlink(folder_.file("nowhere"), path_);
    EXPECT_EQ(tier(), std::nullopt);
}

TEST_F(ClaudeTierReaderTest, FilesAreRememberedApart) {
    const std::string other = folder_.file("other.json");
    test::writeFile(path_, maximum);
    test::writeFile(other, R"({"oauthAccount":{"userRateLimitTier":"other"}})");
    EXPECT_EQ(tier(), "default_claude_max_20x");
    EXPECT_EQ(reader_.tier(other), "other");
    EXPECT_EQ(tier(), "default_claude_max_20x");
    EXPECT_EQ(reads_, 2);
}

TEST_F(ClaudeTierReaderTest, ALargeFileIsReadWhole) {
    std::string text = R"({"history":")" + std::string(20U << 20U, 'x') + R"(",)";
    text += maximum.substr(1);
    test::writeFile(path_, text);
    EXPECT_EQ(tier(), "default_claude_max_20x");
}

}  // namespace
}  // namespace brimwatch
