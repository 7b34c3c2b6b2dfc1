#include "publish/phone_link_text.h"

#include <gtest/gtest.h>

#include "harness/random.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

constexpr std::string_view prefix = "brimwatch://link?v=1&k=";

// As a phone does: six bits a character, and nothing left over but zeros.
std::optional<std::string> keyBytesIn(std::string_view link) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    if (!link.starts_with(prefix)) return std::nullopt;
    std::string bytes;
    unsigned held = 0;
    unsigned heldBits = 0;
    for (const char character : link.substr(prefix.size())) {
        const std::size_t value = alphabet.find(character);
        if (value == std::string_view::npos) return std::nullopt;
        held = (held << 6U) | static_cast<unsigned>(value);
        heldBits += 6;
        if (heldBits < 8) continue;
        heldBits -= 8;
        bytes += static_cast<char>(held >> heldBits);
        held &= (1U << heldBits) - 1;
    }
    if (held != 0) return std::nullopt;
    return bytes;
}

TEST(PhoneLinkText, OfAKeyOfZerosEndsIn43TimesA) {
    EXPECT_EQ(phoneLinkText(test::keyFilledWith('\0')), std::string(prefix) + std::string(43, 'A'));
}

// Made with base64(1), then tr '+/' '-_' and without "=".
TEST(PhoneLinkText, CarriesTheKeyInBase64url) {
    EXPECT_EQ(phoneLinkText(test::countingKey()),
              std::string(prefix) + "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8");
}

TEST(PhoneLinkText, WritesMinusForPlusAndUnderscoreForSlash) {
    EXPECT_EQ(phoneLinkText(test::keyFilledWith('\xFF')),
              std::string(prefix) + std::string(42, '_') + "8");
    EXPECT_EQ(phoneLinkText(test::keyOf("\xFB\xEF\xBE" + std::string(29, '\0'))),
              std::string(prefix) + "----" + std::string(39, 'A'));
}

TEST(PhoneLinkText, GivesAPhoneTheKeyBack) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 500; ++round) {
        std::string bytes(SymmetricKey::byteCount, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random.bits());
        const std::string link = phoneLinkText(test::keyOf(bytes));
        EXPECT_EQ(link.size(), prefix.size() + 43);
        EXPECT_EQ(link.find_first_of("+/=", prefix.size()), std::string::npos) << link;
        EXPECT_EQ(keyBytesIn(link), bytes);
    }
}

}  // namespace
}  // namespace brimwatch
