#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "codex/codex_accounts.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"
#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

using Selection = CodexAccounts::Selection;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::optional<Selection> decoded(std::string_view json) {
    const std::optional<JsonValue> value = parseJson(json);
    if (!value) return std::nullopt;
    return Selection::fromJson(*value);
}

std::string encoded(const Selection& selection) {
    return writeJson(selection.toJson(), JsonLayout::compact);
}

class CodexSelection : public ::testing::Test {
  protected:
    // Without symbolic links in it, so that it is its own resolved form.
    std::string home() const { return std::filesystem::canonical(folder_.path()); }

    test::TemporaryFolder folder_;
    PosixFileSystem files_;
    Selection selection_;
};

TEST_F(CodexSelection, AddingAppendsTheFolder) {
    selection_.add(files_, "/no-such-folder/b");
    selection_.add(files_, "/no-such-folder/a");
    EXPECT_THAT(selection_.manualDirectories,
                ElementsAre("/no-such-folder/b", "/no-such-folder/a"));
    EXPECT_THAT(selection_.excluded, IsEmpty());
}

TEST_F(CodexSelection, AddingKeepsTheStandardisedFolderWithLinksResolved) {
    std::filesystem::create_directories(home() + "/real");
    std::filesystem::create_symlink(home() + "/real", home() + "/link");
    selection_.add(files_, home() + "/./other/../link/");
    EXPECT_THAT(selection_.manualDirectories, ElementsAre(home() + "/real"));
}

TEST_F(CodexSelection, AddingAKnownFolderAgainChangesNothing) {
    std::filesystem::create_directories(home() + "/real");
    std::filesystem::create_symlink(home() + "/real", home() + "/link");
    selection_.add(files_, home() + "/real");
    selection_.add(files_, home() + "/link");
    EXPECT_THAT(selection_.manualDirectories, ElementsAre(home() + "/real"));
}

TEST_F(CodexSelection, AddingSwitchesOnAFolderThatWasSwitchedOff) {
    selection_.manualDirectories = {"/no-such-folder/a"};
    selection_.excluded = {"/no-such-folder/a", "/no-such-folder/b", "/no-such-folder/c"};
    selection_.add(files_, "/no-such-folder/a");
    selection_.add(files_, "/no-such-folder/b");
    EXPECT_THAT(selection_.manualDirectories,
                ElementsAre("/no-such-folder/a", "/no-such-folder/b"));
    EXPECT_THAT(selection_.excluded, ElementsAre("/no-such-folder/c"));
}

TEST_F(CodexSelection, IsWrittenAsTwoLists) {
    EXPECT_EQ(encoded(selection_), R"({"excluded":[],"manualDirectories":[]})");
    selection_.manualDirectories = {"/x/z", "/x/한글"};
    selection_.excluded = {"/b", "/a"};
    EXPECT_EQ(encoded(selection_),
              R"({"excluded":["/a","/b"],"manualDirectories":["/x/z","/x/한글"]})");
}

TEST_F(CodexSelection, IsReadBackAsItWas) {
    selection_.manualDirectories = {"/x/z", "/x/한글", "/x/\"quoted\"\n"};
    selection_.excluded = {"/b", "/a"};
    EXPECT_EQ(decoded(encoded(selection_)), selection_);
}

TEST_F(CodexSelection, WithPathsThatAreNotUtf8StaysAReadableDocument) {
    selection_.manualDirectories = {"/x/.codex-\xFF\xED\xB2\x80"};
    selection_.excluded = {"/x/.codex-\xC3"};
    EXPECT_TRUE(isValidUtf8(encoded(selection_)));
    EXPECT_EQ(decoded(encoded(selection_)), selection_);
}

TEST_F(CodexSelection, IsReadWithListsInAnyOrderUnknownKeysAndRepeatedPaths) {
    EXPECT_EQ(decoded(R"({"new":1,"manualDirectories":["/b","/a"],"excluded":["/d","/c","/d"]})"),
              (Selection{.manualDirectories = {"/b", "/a"}, .excluded = {"/c", "/d"}}));
}

TEST_F(CodexSelection, NeedsBothKeys) {
    EXPECT_EQ(decoded(R"({"manualDirectories":[]})"), std::nullopt);
    EXPECT_EQ(decoded(R"({"excluded":[]})"), std::nullopt);
    EXPECT_EQ(decoded(R"({})"), std::nullopt);
}

TEST_F(CodexSelection, IsNothingWhereATypeIsWrong) {
    for (const char* json :
         {"null", "[]", "7", R"("/a")", R"({"manualDirectories":null,"excluded":[]})",
          R"({"manualDirectories":"/a","excluded":[]})",
          R"({"manualDirectories":[1],"excluded":[]})",
          R"({"manualDirectories":["/a",null],"excluded":[]})",
          R"({"manualDirectories":[],"excluded":{}})",
          R"({"manualDirectories":[],"excluded":[["/a"]]})"}) {
        EXPECT_EQ(decoded(json), std::nullopt) << json;
    }
}

TEST_F(CodexSelection, IsNothingWhereAPathHoldsANul) {
    EXPECT_EQ(decoded(R"({"manualDirectories":["/a\u0000b"],"excluded":[]})"), std::nullopt);
    EXPECT_EQ(decoded(R"({"manualDirectories":[],"excluded":["\u0000"]})"), std::nullopt);
}

}  // namespace
}  // namespace brimwatch
