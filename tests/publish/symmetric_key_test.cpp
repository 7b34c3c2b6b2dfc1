#include "publish/symmetric_key.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>

#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::countingKey;
using test::keyFilledWith;

template <class Value, class = void>
struct IsPrintable : std::false_type {};
template <class Value>
struct IsPrintable<
    Value, std::void_t<decltype(std::declval<std::ostream&>() << std::declval<const Value&>())>>
    : std::true_type {};

TEST(SymmetricKey, HasExactly32Bytes) {
    EXPECT_FALSE(SymmetricKey::fromBytes(std::string_view()));
    EXPECT_FALSE(SymmetricKey::fromBytes(std::string(31, 'k')));
    EXPECT_FALSE(SymmetricKey::fromBytes(std::string(33, 'k')));
    EXPECT_EQ(SymmetricKey::fromBytes(std::string(32, 'k'))->bytes().view(), std::string(32, 'k'));
    EXPECT_EQ(SymmetricKey::fromBytes(SecretBytes(std::string(32, '\0')))->bytes().view(),
              std::string(32, '\0'));
}

TEST(SymmetricKey, IsEqualToOneOfTheSameBytesOnly) {
    EXPECT_EQ(countingKey(), countingKey());
    for (std::size_t index = 0; index < SymmetricKey::byteCount; ++index) {
        std::string bytes(countingKey().bytes().view());
        bytes[index] = static_cast<char>(bytes[index] ^ 0x80);
        EXPECT_NE(test::keyOf(bytes), countingKey()) << index;
    }
}

TEST(SymmetricKey, IsMadeOfTheBytesOfItsSource) {
    EXPECT_EQ(SymmetricKey::random(test::CountingBytes(0)), countingKey());
}

TEST(SymmetricKey, IsAnotherEachTime) {
    std::set<std::string> seen;
    for (int round = 0; round < 1000; ++round)
        seen.emplace(SymmetricKey::random().bytes().view());
    EXPECT_EQ(seen.size(), 1000U);
    // Every bit takes both values: the odds of a fault are 1 to 2^991.
    std::string everSet(32, '\0');
    std::string everClear(32, '\0');
    for (const std::string& bytes : seen) {
        for (std::size_t index = 0; index < bytes.size(); ++index) {
            everSet[index] = static_cast<char>(everSet[index] | bytes[index]);
            everClear[index] = static_cast<char>(everClear[index] | ~bytes[index]);
        }
    }
    EXPECT_EQ(everSet, std::string(32, '\xFF'));
    EXPECT_EQ(everClear, std::string(32, '\xFF'));
}

TEST(SymmetricKey, StaysAKeyWhenItIsMovedFrom) {
    SymmetricKey key = countingKey();
    const SymmetricKey taken = std::move(key);
    EXPECT_EQ(taken, countingKey());
    EXPECT_EQ(key, countingKey());  // NOLINT(bugprone-use-after-move): that is the test
    key = keyFilledWith('x');
    EXPECT_EQ(taken, countingKey());
}

TEST(SymmetricKey, NothingPrintsIt) {
    EXPECT_FALSE(IsPrintable<SymmetricKey>::value);
    EXPECT_FALSE(IsPrintable<SecretBytes>::value);
    EXPECT_TRUE(IsPrintable<std::string>::value);
    const std::optional<SymmetricKey> key = keyFilledWith('k');
    for (const std::string& printed :
         {::testing::PrintToString(*key), ::testing::PrintToString(key)}) {
        EXPECT_EQ(printed.find("kkkk"), std::string::npos) << printed;
        EXPECT_EQ(printed.find("6B-6B"), std::string::npos) << printed;
    }
}

}  // namespace
}  // namespace brimwatch
