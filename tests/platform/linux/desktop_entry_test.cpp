#include "platform/linux/desktop_entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "harness/random.h"
#include "platform/linux/exec_reader.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

using Line = DesktopEntryLine;

const std::string head = "[Desktop Entry]\n";

TEST(DesktopEntry, GivesTheKeysOfItsGroupInTheirOrder) {
    EXPECT_THAT(parseDesktopEntry(head + "Type=Application\nName=A b\n"),
                Optional(ElementsAre(Line{"Type", "Application"}, Line{"Name", "A b"})));
}

TEST(DesktopEntry, ALastLineWithoutItsEndCounts) {
    EXPECT_THAT(parseDesktopEntry(head + "Hidden=true"),
                Optional(ElementsAre(Line{"Hidden", "true"})));
}

TEST(DesktopEntry, CommentsAndEmptyLinesArePassedOver) {
    EXPECT_THAT(parseDesktopEntry("# first\n\n" + head + "#Hidden=true\n   \n  # more\nA=1\n"),
                Optional(ElementsAre(Line{"A", "1"})));
}

TEST(DesktopEntry, KeysOfOtherGroupsDoNotCount) {
    EXPECT_THAT(parseDesktopEntry(head + "A=1\n[Desktop Action x]\nHidden=true\n[X]\nB=2\n"),
                Optional(ElementsAre(Line{"A", "1"})));
}

TEST(DesktopEntry, AGroupThatComesAgainGoesOn) {
    EXPECT_THAT(parseDesktopEntry(head + "A=1\n[X]\nB=2\n" + head + "C=3\n"),
                Optional(ElementsAre(Line{"A", "1"}, Line{"C", "3"})));
}

TEST(DesktopEntry, AKeyThatComesTwiceIsGivenTwice) {
    EXPECT_THAT(parseDesktopEntry(head + "A=1\nA=2\n"),
                Optional(ElementsAre(Line{"A", "1"}, Line{"A", "2"})));
}

TEST(DesktopEntry, AKeyOfALanguageIsAnother) {
    EXPECT_THAT(parseDesktopEntry(head + "Hidden[ko]=true\n"),
                Optional(ElementsAre(Line{"Hidden[ko]", "true"})));
}

TEST(DesktopEntry, BlanksAroundTheEqualsSignDoNotCount) {
    EXPECT_THAT(parseDesktopEntry(head + "  A \t= \t1 2 \nB=\n"),
                Optional(ElementsAre(Line{"A", "1 2 "}, Line{"B", ""})));
}

TEST(DesktopEntry, AValueMayHoldEqualsSignsAndBrackets) {
    EXPECT_THAT(parseDesktopEntry(head + "A=[b]=c\n"), Optional(ElementsAre(Line{"A", "[b]=c"})));
}

TEST(DesktopEntry, LinesMayEndAsOnOtherSystems) {
    EXPECT_THAT(parseDesktopEntry("[Desktop Entry]\r\n\r\nHidden=true\r\n"),
                Optional(ElementsAre(Line{"Hidden", "true"})));
}

TEST(DesktopEntry, AGroupWithoutKeysIsAnEntry) {
    EXPECT_THAT(parseDesktopEntry("[Desktop Entry]"), Optional(IsEmpty()));
}

TEST(DesktopEntry, AnythingElseIsNone) {
    for (const std::string& text :
         {std::string(), std::string("# only a comment\n"), std::string("Hidden=false\n"),
          "Hidden=false\n" + head, "[Other]\n" + head, std::string("[Desktop Entry\nA=1\n"),
          std::string("[desktop entry]\nA=1\n"), std::string("[]\nA=1\n"), head + "no key\n",
          head + "=value\n", head + "A=1\n[broken\n", head + "[a]b]\n",
          "\xEF\xBB\xBF" + head + "A=1\n", head + "A=1\n" + std::string(1, '\0'),
          std::string("{\"json\": true}")}) {
        EXPECT_EQ(parseDesktopEntry(text), std::nullopt) << text;
    }
}

TEST(DesktopEntry, BooleansAreTwoWordsOrTwoDigits) {
    EXPECT_THAT(desktopBoolean("true"), Optional(true));
    EXPECT_THAT(desktopBoolean("false \t"), Optional(false));
    EXPECT_THAT(desktopBoolean("1"), Optional(true));
    EXPECT_THAT(desktopBoolean("0"), Optional(false));
    for (const char* value : {"", "True", "yes", "truefalse", "2", "true;"})
        EXPECT_EQ(desktopBoolean(value), std::nullopt) << value;
}

TEST(DesktopEntry, StringsHaveEscapes) {
    EXPECT_EQ(desktopString(R"(a\sb\nc\td\re\\f)"), "a b\nc\td\re\\f");
    EXPECT_EQ(desktopString(R"(\\n)"), "\\n");
    EXPECT_EQ(desktopString(R"(a\qb\)"), R"(a\qb\)");
    EXPECT_EQ(desktopString(""), "");
}

TEST(DesktopEntry, ListsAreSeparatedBySemicolonsThatMayBeEscaped) {
    EXPECT_THAT(desktopList("GNOME;KDE;"), ElementsAre("GNOME", "KDE"));
    EXPECT_THAT(desktopList("GNOME"), ElementsAre("GNOME"));
    EXPECT_THAT(desktopList(R"(a\;b;c\\;d\s)"), ElementsAre("a;b", "c\\", "d "));
    EXPECT_THAT(desktopList(";;x"), ElementsAre("", "", "x"));
    EXPECT_THAT(desktopList(R"(a\)"), ElementsAre(R"(a\)"));
    EXPECT_THAT(desktopList(""), IsEmpty());
}

TEST(DesktopEntry, ACommandIsQuotedThenEscaped) {
    EXPECT_EQ(execValue("/usr/bin/brimwatch"), R"("/usr/bin/brimwatch")");
    EXPECT_EQ(execValue("/a b/c"), R"("/a b/c")");
    EXPECT_EQ(execValue(R"(/a"b)"), R"("/a\\"b")");
    EXPECT_EQ(execValue(R"(/a\b)"), R"("/a\\\\b")");
    EXPECT_EQ(execValue("/a$b`c"), R"("/a\\$b\\`c")");
    EXPECT_EQ(execValue("/a\nb\tc"), R"("/a\nb\tc")");
    EXPECT_EQ(execValue("/한글"), R"("/한글")");
}

TEST(DesktopEntry, APathWithAPercentSignIsAnArgument) {
    EXPECT_EQ(execValue("/100%"), R"(/usr/bin/env "/100%%")");
}

TEST(DesktopEntry, APathThatNoCommandCanTellGivesNone) {
    for (const char* path : {"/a=b", "/a\x01", "/a\x7F", "/a\x1B[0m", "/\xFF", "/\xED\xB0\x80"})
        EXPECT_EQ(execValue(path), std::nullopt) << path;
}

TEST(DesktopEntry, EveryCommandIsReadAsThePathThatItWasMadeOf) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::string alphabet = "ab \"'\\`$%~|&;<>*?#()[]{}!\n\t\r,-./nstr";
    for (int round = 0; round < 5000; ++round) {
        std::string path = "/";
        for (std::size_t count = random.below(12); count > 0; --count)
            path += alphabet[random.below(alphabet.size())];
        const std::string text = head + "Exec=" + execValue(path).value() + "\n";
        const auto lines = parseDesktopEntry(text);
        ASSERT_TRUE(lines) << path;
        ASSERT_EQ(lines->size(), 1U) << path;
        const std::vector<std::string> arguments =
            test::readExec(std::string(lines->front().value));
        ASSERT_EQ(arguments.back(), path);
        ASSERT_EQ(arguments.size(), path.find('%') == std::string::npos ? 1U : 2U);
    }
}

TEST(DesktopEntry, NoTextConfusesTheParser) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::vector<std::string> pieces = {
        "[Desktop Entry]", "[", "]", "\n", "\r", "=", "#", ";", "\\", "A", " ", "Hidden"};
    for (int round = 0; round < 20'000; ++round) {
        std::string text = random.oneIn(2) ? head : "";
        for (std::size_t count = random.below(12); count > 0; --count)
            text += pieces[random.below(pieces.size())];
        const auto lines = parseDesktopEntry(text);
        if (!lines) continue;
        for (const Line& line : *lines) {
            EXPECT_FALSE(line.key.empty());
            EXPECT_EQ(line.value.find('\n'), std::string_view::npos);
            std::size_t length = 0;
            for (const std::string& element : desktopList(line.value))
                length += element.size();
            EXPECT_LE(length, line.value.size());
        }
    }
}

}  // namespace
}  // namespace brimwatch
