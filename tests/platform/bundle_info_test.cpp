#include "platform/bundle_info.h"

#include <gtest/gtest.h>

#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr const char* whole = R"({
  "CFBundleIdentifier": "a", "CFBundleVersion": "57", "CFBundleShortVersionString": "1.4.2",
  "QMKeychainAccessGroup": "b", "QMICloudContainer": "c",
  "QMICloudEnvironment": "d", "QMICloudApiToken": "e", "QMICloudSignInRedirect": "f",
  "QMPrivateUpdatesKeychainGroup": "g", "QMUpdateHost": "h", "SUFeedURL": "i",
  "SUPublicEDKey": "j", "QMICloudService": "k", "another": "l"})";

TEST(BundleInfoTest, EachMemberIsRead) {
    EXPECT_EQ(parseBundleInfo(whole), (BundleInfo{.bundleIdentifier = "a",
                                                  .version = "57",
                                                  .shortVersion = "1.4.2",
                                                  .keychainAccessGroup = "b",
                                                  .cloudContainer = "c",
                                                  .cloudEnvironment = "d",
                                                  .cloudApiToken = "e",
                                                  .cloudService = "k",
                                                  .cloudSignInRedirect = "f",
                                                  .privateUpdatesKeychainGroup = "g",
                                                  .updateHost = "h",
                                                  .publicUpdateFeed = "i",
                                                  .publicUpdateSigningKey = "j"}));
}

TEST(BundleInfoTest, WhatIsNotATextIsEmpty) {
    EXPECT_EQ(parseBundleInfo(R"({"QMICloudContainer": 7, "QMUpdateHost": "h"})"),
              (BundleInfo{.updateHost = "h"}));
    EXPECT_EQ(parseBundleInfo(R"({"QMICloudContainer": null})"), BundleInfo());
}

TEST(BundleInfoTest, WhatIsNotAnObjectHoldsNothing) {
    for (const char* text : {"", "[]", "\"a\"", "{\"QMUpdateHost\": \"h\""})
        EXPECT_EQ(parseBundleInfo(text), BundleInfo()) << text;
}

TEST(BundleInfoTest, TheFileLiesBesideTheDesktopProgram) {
    EXPECT_EQ(bundleInfoPath("/usr/libexec/brimwatch/brimwatch-desktop"),
              "/usr/libexec/brimwatch/bundle-info.json");
}

TEST(BundleInfoTest, AFileIsReadUpTo64KiB) {
    const test::TemporaryFolder folder;
    PosixFileSystem files;
    const std::string path = folder.file("bundle-info.json");
    EXPECT_EQ(readBundleInfo(files, path), BundleInfo());
    std::string text = whole;
    test::writeFile(path, text);
    EXPECT_EQ(readBundleInfo(files, path), parseBundleInfo(whole));
    text.append(65'536 - text.size(), ' ');
    test::writeFile(path, text);
    EXPECT_EQ(readBundleInfo(files, path), parseBundleInfo(whole));
    test::writeFile(path, text + ' ');
    EXPECT_EQ(readBundleInfo(files, path), BundleInfo());
}

TEST(BundleInfoTest, PublishingTakesAContainerAnEnvironmentAndAToken) {
    const BundleInfo full = {.cloudContainer = "c", .cloudEnvironment = "d", .cloudApiToken = "e"};
    EXPECT_TRUE(full.canPublish());
    for (std::string BundleInfo::*member :
         {&BundleInfo::cloudContainer, &BundleInfo::cloudEnvironment, &BundleInfo::cloudApiToken}) {
        BundleInfo lacking = full;
        lacking.*member = "";
        EXPECT_FALSE(lacking.canPublish());
    }
}

TEST(BundleInfoTest, GroupAndContainerAreGivenWhereTheyAreThere) {
    const BundleInfo info = parseBundleInfo(whole);
    EXPECT_EQ(info.requiredKeychainAccessGroup(), "b");
    EXPECT_EQ(info.requiredCloudContainer(), "c");
}

TEST(BundleInfoDeathTest, ABuildWithoutAGroupOrAContainerEndsAtItsFirstUse) {
    EXPECT_EXIT(BundleInfo().requiredKeychainAccessGroup(), testing::ExitedWithCode(1),
                "^brimwatch: this build has no QMKeychainAccessGroup\n$");
    EXPECT_EXIT(BundleInfo().requiredCloudContainer(), testing::ExitedWithCode(1),
                "^brimwatch: this build has no QMICloudContainer\n$");
}

TEST(BundleInfoTest, EveryBuildHasAGroupAContainerAndAnIdentifier) {
    PosixFileSystem files;
    const BundleInfo info = readBundleInfo(files, BRIMWATCH_BUNDLE_INFO);
    EXPECT_NE(info.requiredKeychainAccessGroup(), "");
    EXPECT_NE(info.requiredCloudContainer(), "");
    EXPECT_NE(info.bundleIdentifier, "");
    EXPECT_NE(info.version, "");
    EXPECT_NE(info.shortVersion, "");
    EXPECT_NE(info.cloudEnvironment, "");
}

}  // namespace
}  // namespace brimwatch
