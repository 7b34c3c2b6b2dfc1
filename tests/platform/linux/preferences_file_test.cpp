#include "platform/linux/preferences_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "harness/random.h"
#include "harness/random_json.h"
#include "platform/linux/settings_folders.h"

namespace brimwatch {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class PreferencesFileTest : public test::SettingsFolders {
  protected:
    PreferencesFile opened() { return {files_, settings_, lock_}; }
    PreferencesFile opened(FileSystem& files) { return {files, settings_, lock_}; }
};

TEST_F(PreferencesFileTest, KeysThatNobodyKnowsKeepTheirValuesToTheDigit) {
    store(R"({"zeta":[1.50,1E+400,-0,"\ud83d","/"],"appTheme":"light","n":12345678901234567890})");
    PreferencesFile file = opened();
    EXPECT_TRUE(file.change("appTheme", "dark"));
    EXPECT_EQ(stored(),
              "{\n  \"appTheme\": \"dark\",\n  \"n\": 12345678901234567890,\n  \"zeta\": [\n"
              "    1.50,\n    1E+400,\n    -0,\n    \"\\ud83d\",\n    \"/\"\n  ]\n}\n");
}

TEST_F(PreferencesFileTest, AnyDocumentKeepsItsOtherMembers) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    test::RandomJson json(random);
    for (int round = 0; round < 100; ++round) {
        const std::string text = json.object(3);
        startAgain(text);
        JsonObject expected = *parseJsonObject(text);
        expected.set("appTheme", "dark");
        PreferencesFile file = opened();
        ASSERT_TRUE(file.change("appTheme", "dark"));
        EXPECT_EQ(parseJsonObject(stored()), expected) << text;
    }
}

TEST_F(PreferencesFileTest, AnEqualValueTouchesNoFile) {
    store(R"({"appTheme":"dark"})");
    test::ScriptedFileSystem recording(files_);
    PreferencesFile file = opened(recording);
    EXPECT_TRUE(file.change("appTheme", "dark"));
    EXPECT_TRUE(file.change("none", std::nullopt));
    EXPECT_EQ(stored(), R"({"appTheme":"dark"})");
    EXPECT_THAT(recording.steps(), Not(Contains(HasSubstr("makeTemporary"))));
}

TEST_F(PreferencesFileTest, RemovingFromNothingMakesNoFile) {
    EXPECT_TRUE(opened().change("appTheme", std::nullopt));
    EXPECT_FALSE(test::exists(settings_));
}

TEST_F(PreferencesFileTest, AChangeStartsFromWhatAnEditorWroteMeanwhile) {
    store(R"({"a":1,"b":2})");
    PreferencesFile file = opened();
    store(R"({"a":7,"c":3})");
    EXPECT_TRUE(file.change("b", JsonNumber{"4"}));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"a":7,"b":4,"c":3})"));
    EXPECT_EQ(file.value("a"), JsonValue(JsonNumber{"7"}));
}

TEST_F(PreferencesFileTest, WhatAnEditorWritesBetweenAnyTwoStepsBeforeTheReplacementStays) {
    test::ScriptedFileSystem counting(files_);
    store(R"({"a":1})");
    ASSERT_TRUE(opened(counting).change("b", true));
    for (std::size_t step = 0; !counting.steps()[step].starts_with("replace"); ++step) {
        startAgain(R"({"a":1})");
        test::ScriptedFileSystem interrupted(files_);
        interrupted.interruptBeforeEachStep([&](std::size_t next, const std::string&) {
            if (next == step) store(R"({"a":1,"edited":true})");
        });
        const bool isLastLook = counting.steps()[step].starts_with("status");
        EXPECT_TRUE(opened(interrupted).change("b", true));
        if (isLastLook && counting.steps()[step + 1].starts_with("replace")) continue;
        EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"a":1,"b":true,"edited":true})"))
            << counting.steps()[step];
    }
}

TEST_F(PreferencesFileTest, AFileThatNeverComesToRestIsLeftAlone) {
    store("{}");
    int edits = 0;
    test::ScriptedFileSystem interrupted(files_);
    PreferencesFile file = opened(interrupted);
    interrupted.interruptBeforeEachStep([&](std::size_t, const std::string& name) {
        if (name == "synchronize") store("{\"edits\":" + std::to_string(++edits) + "}");
    });
    EXPECT_EQ(file.change("a", true).error(), std::errc::resource_unavailable_try_again);
    EXPECT_EQ(stored(), "{\"edits\":" + std::to_string(edits) + "}");
    EXPECT_EQ(file.value("a"), JsonValue(true));
}

TEST_F(PreferencesFileTest, AFileThatGoesAwayIsWrittenAgainWhole) {
    store(R"({"a":1})");
    PreferencesFile file = opened();
    std::filesystem::remove_all(config_);
    EXPECT_TRUE(file.change("b", true));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"a":1,"b":true})"));
}

TEST_F(PreferencesFileTest, AFileDamagedWhileRunningLosesNoKey) {
    store(R"({"a":1})");
    PreferencesFile file = opened();
    store("{");
    EXPECT_TRUE(file.change("b", true));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"a":1,"b":true})"));
    EXPECT_EQ(test::readFile(damagedCopy_ + "1"), "{");
}

TEST_F(PreferencesFileTest, EveryTruncationIsKeptBesideTheFileAndTheStartGoesOn) {
    const std::string whole = R"({"appTheme":"dark","n":[1.50,{"a":"한"}]})";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string damaged = whole.substr(0, length);
        startAgain(damaged);
        PreferencesFile file = opened();
        EXPECT_EQ(file.value("appTheme"), std::nullopt);
        EXPECT_EQ(stored(), damaged);
        EXPECT_TRUE(file.change("a", true));
        EXPECT_EQ(stored(), "{\n  \"a\": true\n}\n");
        EXPECT_EQ(test::readFile(damagedCopy_ + "1"), damaged);
    }
}

TEST_F(PreferencesFileTest, WhatIsNoObjectOrNotUtf8OrTooDeepIsDamaged) {
    const std::string deep = "{\"a\":" + std::string(100'000, '[') + '}';
    for (const std::string& bytes : {std::string("[1]"), std::string("\"x\""), std::string("null"),
                                     std::string("{\"\xFF\":1}"), std::string(1, '\0'), deep}) {
        startAgain(bytes);
        EXPECT_TRUE(opened().change("a", true));
        EXPECT_EQ(test::readFile(damagedCopy_ + "1"), bytes);
    }
}

TEST_F(PreferencesFileTest, ADamagedFileIsKeptOnceAndOnlyOnce) {
    store("{");
    test::ScriptedFileSystem failing(files_);
    failing.interruptBeforeEachStep([&](std::size_t step, const std::string& name) {
        if (name == "replace") failing.failAtStep(step, std::errc::no_space_on_device);
    });
    PreferencesFile file = opened(failing);
    EXPECT_FALSE(file.change("a", true));
    EXPECT_FALSE(file.change("a", true));
    EXPECT_EQ(stored(), "{");
    failing.interruptBeforeEachStep(nullptr);
    EXPECT_TRUE(file.flush());
    EXPECT_TRUE(file.change("b", true));
    EXPECT_THAT(names(config_), ElementsAre("settings.json", "settings.json.brimwatch-damaged-1"));
}

TEST_F(PreferencesFileTest, AnotherDamagedFileGetsAnotherName) {
    for (const std::string bytes : {"{", "[", "{"}) {
        store(bytes);
        EXPECT_TRUE(opened().change("a", true));
    }
    EXPECT_EQ(test::readFile(damagedCopy_ + "1"), "{");
    EXPECT_EQ(test::readFile(damagedCopy_ + "2"), "[");
    EXPECT_FALSE(test::exists(damagedCopy_ + "3"));
}

TEST_F(PreferencesFileTest, AFileThatCantBeReadIsKeptItselfOnceAndOnlyOnce) {
    store(R"({"a":1})");
    const std::uint64_t inode = files_.status(settings_)->inode;
    test::ScriptedFileSystem failing(files_);
    failing.failEveryRead(settings_, std::errc::permission_denied);
    failing.interruptBeforeEachStep([&](std::size_t step, const std::string& name) {
        if (name == "replace") failing.failAtStep(step, std::errc::no_space_on_device);
    });
    PreferencesFile file = opened(failing);
    EXPECT_FALSE(file.change("b", true));
    EXPECT_FALSE(file.change("b", false));
    failing.interruptBeforeEachStep(nullptr);
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(files_.status(damagedCopy_ + "1")->inode, inode);
    EXPECT_EQ(test::readFile(damagedCopy_ + "1"), R"({"a":1})");
    EXPECT_FALSE(test::exists(damagedCopy_ + "2"));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"b":false})"));
}

TEST_F(PreferencesFileTest, WhatCanNeitherBeReadNorKeptIsLeftAlone) {
    std::filesystem::create_directories(settings_ + "/inside");
    PreferencesFile file = opened();
    EXPECT_FALSE(file.change("a", true));
    EXPECT_EQ(file.value("a"), JsonValue(true));
    EXPECT_TRUE(test::exists(settings_ + "/inside"));
}

TEST_F(PreferencesFileTest, AFileThatIsTooLargeIsKeptAndNoneIsWritten) {
    const std::string large = "{\"a\":\"" + std::string(preferencesSizeLimit, 'x') + "\"}";
    store(large);
    PreferencesFile file = opened();
    EXPECT_EQ(file.value("a"), std::nullopt);
    EXPECT_TRUE(file.change("b", true));
    EXPECT_EQ(test::readFile(damagedCopy_ + "1"), large);
    EXPECT_EQ(file.change("c", std::string(preferencesSizeLimit, 'x')).error(),
              std::errc::file_too_large);
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"b":true})"));
    EXPECT_TRUE(file.change("c", "x"));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"b":true,"c":"x"})"));
}

TEST_F(PreferencesFileTest, AChangeThatIsTooLargeFailsAloneAndHoldsForThisObject) {
    store(R"({"a":1})");
    const JsonValue large(std::string(preferencesSizeLimit, 'x'));
    PreferencesFile file = opened();
    EXPECT_EQ(file.change("m", large).error(), std::errc::file_too_large);
    EXPECT_EQ(file.change("m", large).error(), std::errc::file_too_large);
    EXPECT_EQ(stored(), R"({"a":1})");
    EXPECT_TRUE(file.change("b", true));
    EXPECT_TRUE(file.change("z", true));
    EXPECT_TRUE(file.change("a", std::nullopt));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"b":true,"z":true})"));
    EXPECT_EQ(file.value("m"), large);
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(opened().value("m"), std::nullopt);
}

TEST_F(PreferencesFileTest, AChangeThatWasTooLargeIsWrittenOnceThereIsRoom) {
    const JsonValue half(std::string(preferencesSizeLimit / 2, 'x'));
    PreferencesFile file = opened();
    EXPECT_TRUE(file.change("m", half));
    EXPECT_FALSE(file.change("a", half));
    EXPECT_TRUE(file.change("m", std::nullopt));
    EXPECT_EQ(opened().value("a"), half);
    EXPECT_TRUE(file.change("b", true));
    EXPECT_EQ(opened().value("a"), half);
}

TEST_F(PreferencesFileTest, ALaterChangeComesBeforeOneThatWasTooLarge) {
    const JsonValue half(std::string(preferencesSizeLimit / 2, 'x'));
    PreferencesFile file = opened();
    EXPECT_TRUE(file.change("m", half));
    EXPECT_FALSE(file.change("a", half));
    store("{}");
    EXPECT_TRUE(file.change("b", half));
    EXPECT_EQ(opened().value("b"), half);
    EXPECT_EQ(opened().value("a"), std::nullopt);
    EXPECT_EQ(file.value("a"), half);
}

TEST_F(PreferencesFileTest, AFileThatLineBreaksWouldMakeTooLargeIsWrittenWithoutThem) {
    std::string text = R"({"many":[0)";
    while (text.size() < preferencesSizeLimit - 100)
        text += ",1234567890123456789";
    text += R"(],"z":1)";
    text.append(preferencesSizeLimit - text.size() - 1, '1') += '}';
    store(text);
    PreferencesFile file = opened();
    EXPECT_EQ(file.change("b", true).error(), std::errc::file_too_large);
    EXPECT_EQ(stored(), text);
    EXPECT_TRUE(file.change("z", JsonNumber{"2"}));
    JsonObject expected = *parseJsonObject(text);
    expected.set("b", true);
    expected.set("z", JsonNumber{"2"});
    EXPECT_TRUE(parseJsonObject(stored()) == expected);
}

TEST_F(PreferencesFileTest, IsWrittenThroughASymbolicLinkWithItsMode) {
    const std::string target = folder_.file("dotfiles/brimwatch.json");
    test::writeFile(target, R"({"a":1})");
    std::filesystem::permissions(target, std::filesystem::perms(0640));
    std::filesystem::create_directories(config_);
    std::filesystem::create_symlink("../../dotfiles/brimwatch.json", settings_);
    EXPECT_TRUE(opened().change("b", true));
    EXPECT_TRUE(std::filesystem::is_symlink(settings_));
    EXPECT_EQ(parseJsonObject(test::readFile(target)), parseJsonObject(R"({"a":1,"b":true})"));
    EXPECT_EQ(files_.status(target)->permissions, 0640U);
}

TEST_F(PreferencesFileTest, TwoOfOneFileKeepEachOthersKeys) {
    PreferencesFile first = opened();
    PreferencesFile second = opened();
    EXPECT_TRUE(first.change("a", true));
    EXPECT_TRUE(second.change("b", true));
    EXPECT_TRUE(first.change("c", true));
    EXPECT_EQ(parseJsonObject(stored()), parseJsonObject(R"({"a":true,"b":true,"c":true})"));
    EXPECT_EQ(first.value("b"), JsonValue(true));
}

void changeKeys(FileSystem& files, const std::string& path, const std::string& lock,
                const std::string& prefix) {
    PreferencesFile file(files, path, lock);
    for (int number = 0; number < 25; ++number)
        EXPECT_TRUE(file.change(prefix + std::to_string(number), true));
}

TEST_F(PreferencesFileTest, TwoThatWriteAtOnceLoseNoKey) {
    std::thread other([&] { changeKeys(files_, settings_, lock_, "a"); });
    changeKeys(files_, settings_, lock_, "b");
    other.join();
    EXPECT_EQ(parseJsonObject(stored())->members().size(), 50U);
}

TEST_F(PreferencesFileTest, AWriterThatNeverEndsIsNotWaitedFor) {
    std::filesystem::create_directories(state_);
    const auto held = files_.lock(lock_, LockWait::untilFree);
    ASSERT_TRUE(held);
    EXPECT_TRUE(opened().change("a", true));
    EXPECT_EQ(stored(), "{\n  \"a\": true\n}\n");
}

TEST_F(PreferencesFileTest, LocksThatCantBeHadStopNothing) {
    test::writeFile(folder_.file("state"), "no folder");
    EXPECT_TRUE(opened().change("a", true));
    EXPECT_EQ(stored(), "{\n  \"a\": true\n}\n");
}

}  // namespace
}  // namespace brimwatch
