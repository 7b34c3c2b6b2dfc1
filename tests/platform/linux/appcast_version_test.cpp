#include "platform/linux/appcast_version.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "harness/random.h"

namespace brimwatch {
namespace {

void expectBelow(const char* lower, const char* higher) {
    EXPECT_TRUE(compareVersions(lower, higher) < 0) << lower << " " << higher;
    EXPECT_TRUE(compareVersions(higher, lower) > 0) << lower << " " << higher;
}

void expectSame(const char* left, const char* right) {
    EXPECT_TRUE(compareVersions(left, right) == 0) << left << " " << right;
    EXPECT_TRUE(compareVersions(right, left) == 0) << left << " " << right;
}

TEST(AppcastVersion, NumbersCountByTheirValue) {
    expectBelow("9", "10");
    expectBelow("57", "58");
    expectBelow("1.9", "1.10");
    expectBelow("1.2.3", "1.3");
    expectSame("057", "57");
    expectSame("0", "000");
    expectBelow("18446744073709551615", "18446744073709551616");
    expectBelow("99999999999999999999998", "99999999999999999999999");
}

TEST(AppcastVersion, MissingNumbersAreZero) {
    expectSame("1", "1.0");
    expectSame("1.0", "1.0.0.0");
    expectSame("1.", "1.0");
    expectBelow("1", "1.0.1");
    expectBelow("1.0.0", "1.1");
}

TEST(AppcastVersion, TextIsBelowTheEndAndBelowNumbers) {
    expectBelow("1.0b", "1.0");
    expectBelow("1.0a", "1.0b");
    expectBelow("1.0b1", "1.0b2");
    expectBelow("1.0rc", "1.0.1");
    expectBelow("1.0b5", "1.0.0");
    expectBelow("1.b", "1.1");
    expectBelow("", "1");
    expectBelow("a", "");
}

TEST(AppcastVersion, WhatStandsBehindAHyphenDoesNotCount) {
    expectSame("1.2-57", "1.2-58");
    expectSame("1.2-57", "1.2");
    expectBelow("-1", "-2");
    expectSame("-1-5", "-1-6");
}

TEST(AppcastVersion, SeparatorsAreAllTheSameAndBelowNumbers) {
    expectSame("1 2", "1_2");
    expectSame("1b.2", "1b,2");
    expectBelow("1b.", "1b0");
    expectBelow("1b1x", "1b1.");
}

TEST(AppcastVersion, EachVersionIsTheSameAsItself) {
    for (const char* version : {"", ".", "..", "1..2", "-", "--", "1.0b", "한글", "1\n2"})
        expectSame(version, version);
}

TEST(AppcastVersion, TheOrderOfAnyTwoIsOneOrder) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const auto make = [&] {
        std::string version;
        for (std::size_t length = random.below(6); length > 0; --length)
            version += "01.b-"[random.below(5)];
        return version;
    };
    for (int round = 0; round < 20'000; ++round) {
        const std::string left = make();
        const std::string right = make();
        EXPECT_EQ(compareVersions(left, right) < 0, compareVersions(right, left) > 0)
            << left << " | " << right;
    }
}

}  // namespace
}  // namespace brimwatch
