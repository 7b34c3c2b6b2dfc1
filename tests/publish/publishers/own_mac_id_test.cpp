// The identity of this computer.

#include "publish/publishers/own_mac_id.h"

#include <gtest/gtest.h>

#include <regex>

#include "core/memory_settings_store.h"

namespace brimwatch {
namespace {

TEST(OwnMacId, IsAnUppercaseUuidMadeAtItsFirstUse) {
    test::MemorySettingsStore defaults;
    const MacId id = ownMacId(defaults);
    const std::regex pattern("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    EXPECT_TRUE(std::regex_match(id.text, pattern)) << id.text;
    EXPECT_EQ(defaults.stored("macID"), "\"" + id.text + "\"");
}

TEST(OwnMacId, StaysTheSame) {
    test::MemorySettingsStore defaults;
    const MacId id = ownMacId(defaults);
    EXPECT_EQ(ownMacId(defaults), id);
    EXPECT_EQ(defaults.writes.size(), 1U);
}

TEST(OwnMacId, IsTakenFromTheSettingsAsItStands) {
    test::MemorySettingsStore defaults;
    defaults.put("macID", R"("anything")");
    EXPECT_EQ(ownMacId(defaults).text, "anything");
    EXPECT_TRUE(defaults.writes.empty());
}

TEST(OwnMacId, AValueOfAnotherTypeCountsAsAbsent) {
    test::MemorySettingsStore defaults;
    defaults.put("macID", "17");
    EXPECT_EQ(ownMacId(defaults).text.size(), 36U);
}

TEST(OwnMacId, IsAnotherOneOnEachComputer) {
    test::MemorySettingsStore one;
    test::MemorySettingsStore other;
    EXPECT_NE(ownMacId(one), ownMacId(other));
}

TEST(OwnMacId, HoldsForTheRunEvenIfItCannotBeStored) {
    test::MemorySettingsStore defaults;
    defaults.error = std::make_error_code(std::errc::no_space_on_device);
    const MacId id = ownMacId(defaults);
    EXPECT_EQ(ownMacId(defaults), id);
}

}  // namespace
}  // namespace brimwatch
