#include "claude/command_environment.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

TEST(CommandEnvironment, LooksForInstalledCopiesInBundlesFirst) {
    EXPECT_EQ(installedCandidates("/home/someone"),
              (std::vector<std::string>{
                  "/Applications/Brimwatch.app/Contents/MacOS/Brimwatch",
                  "/home/someone/Applications/Brimwatch.app/Contents/MacOS/Brimwatch",
                  "/usr/bin/brimwatch",
                  "/usr/local/bin/brimwatch",
                  "/home/someone/.local/bin/brimwatch",
              }));
}

TEST(CommandEnvironment, RejectsDevelopmentLocationsUnlessToldOtherwise) {
    EXPECT_TRUE(CommandEnvironment().rejectDevelopmentLocations);
}

}  // namespace
}  // namespace brimwatch
