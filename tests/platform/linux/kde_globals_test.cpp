#include "platform/linux/kde_globals.h"

#include <gtest/gtest.h>

#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

TEST(KdeGlobalsTest, TheFactorStandsInItsGroup) {
    EXPECT_EQ(animationDurationFactor("[KDE]\nAnimationDurationFactor=0\n"), 0.0);
    EXPECT_EQ(animationDurationFactor("[KDE]\nAnimationDurationFactor=0.5"), 0.5);
    EXPECT_EQ(animationDurationFactor("[General]\nfont=Sans\n\n[KDE]\nSingleClick=false\n"
                                      "AnimationDurationFactor=1.25\n[Icons]\nTheme=x\n"),
              1.25);
}

TEST(KdeGlobalsTest, BlanksAndFlagsDoNotMatter) {
    EXPECT_EQ(animationDurationFactor(" [KDE] \r\n\t AnimationDurationFactor = 0 \r\n"), 0.0);
    EXPECT_EQ(animationDurationFactor("[KDE][$i]\nAnimationDurationFactor[$i]=0\n"), 0.0);
}

TEST(KdeGlobalsTest, OtherGroupsAndKeysAreNotMeant) {
    EXPECT_EQ(animationDurationFactor(""), std::nullopt);
    EXPECT_EQ(animationDurationFactor("AnimationDurationFactor=0\n[KDE]\n"), std::nullopt);
    EXPECT_EQ(animationDurationFactor("[KDE][Sub]\nAnimationDurationFactor=0\n"), std::nullopt);
    EXPECT_EQ(animationDurationFactor("[kde]\nAnimationDurationFactor=0\n"), std::nullopt);
    EXPECT_EQ(animationDurationFactor("[KDE]\n[General]\nAnimationDurationFactor=0\n"),
              std::nullopt);
    EXPECT_EQ(animationDurationFactor("[KDE]\nanimationDurationFactor=0\n"), std::nullopt);
    EXPECT_EQ(animationDurationFactor("[KDE]\n#AnimationDurationFactor=0\n"), std::nullopt);
    EXPECT_EQ(animationDurationFactor("[KDE]\nAnimationDurationFactor\n"), std::nullopt);
}

TEST(KdeGlobalsTest, WhatIsNoNumberIsNoFactor) {
    for (const std::string value : {"", "none", "0x", "0,5", "1 2", "+0", "false"}) {
        EXPECT_EQ(animationDurationFactor("[KDE]\nAnimationDurationFactor=" + value + "\n"),
                  std::nullopt)
            << value;
    }
}

TEST(KdeGlobalsTest, TheLastCounts) {
    EXPECT_EQ(animationDurationFactor("[KDE]\nAnimationDurationFactor=0\n[A]\n[KDE]\n"
                                      "AnimationDurationFactor=1\n"),
              1.0);
}

TEST(KdeGlobalsTest, AFactorOfZeroStopsMotion) {
    const test::TemporaryFolder folder;
    PosixFileSystem files;
    const std::string path = folder.file("kdeglobals");
    test::writeFile(path, "[KDE]\nAnimationDurationFactor=0\n");
    EXPECT_TRUE(kdeStopsMotion(files, folder.path()));
    test::writeFile(path, "[KDE]\nAnimationDurationFactor=0.01\n");
    EXPECT_FALSE(kdeStopsMotion(files, folder.path()));
    test::writeFile(path, "[KDE]\nAnimationDurationFactor=0\n" + std::string(1 << 20, '#'));
    EXPECT_FALSE(kdeStopsMotion(files, folder.path()));
}

TEST(KdeGlobalsTest, AFileThatIsNotThereStopsNothing) {
    const test::TemporaryFolder folder;
    PosixFileSystem files;
    EXPECT_FALSE(kdeStopsMotion(files, folder.path()));
    EXPECT_FALSE(kdeStopsMotion(files, std::nullopt));
    EXPECT_FALSE(kdeStopsMotion(files, "/dev/null"));
}

}  // namespace
}  // namespace brimwatch
