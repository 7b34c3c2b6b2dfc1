#include "platform/linux/ed25519_signature.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <string>

namespace brimwatch {
namespace {

std::string base64(const char* hexadecimal) {
    return QByteArray::fromHex(hexadecimal).toBase64().toStdString();
}
std::string bytes(const char* hexadecimal) {
    return QByteArray::fromHex(hexadecimal).toStdString();
}

// Tests 1 to 3 of RFC 8032, 7.1.
struct Example {
    const char* key;
    const char* message;
    const char* signature;
};
constexpr Example examples[] = {
    {"d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a", "",
     "e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e065224901555fb8821590a33bacc61e39701cf9b"
     "46bd25bf5f0595bbe24655141438e7a100b"},
    {"3d4017c3e843895a92b70aa74d1b7ebc9c982ccf2ec4968cc0cd55f12af4660c", "72",
     "92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da085ac1e43e15996e458f3613d0f11"
     "d8c387b2eaeb4302aeeb00d291612bb0c00"},
    {"fc51cd8e6218a1a38da47ed00230f0580816ed13ba3303ac5deb911548908025", "af82",
     "6291d657deec24024827e69c3abe01a30ce548a284743a445e3680d7db5ac3ac18ff9b538d16f290ae67f760984dc"
     "6594a7c15e9716ed28dc027beceea1ec40a"},
};

TEST(Ed25519Signature, OfTheStandardHolds) {
    for (const Example& example : examples)
        EXPECT_TRUE(
            verifyEd25519(bytes(example.message), base64(example.signature), base64(example.key)));
}

TEST(Ed25519Signature, OfOtherBytesOrOfAnotherKeyDoesNotHold) {
    const std::string key = base64(examples[2].key);
    const std::string signature = base64(examples[2].signature);
    EXPECT_FALSE(verifyEd25519("", signature, key));
    EXPECT_FALSE(verifyEd25519(bytes("af83"), signature, key));
    EXPECT_FALSE(verifyEd25519(bytes("af8200"), signature, key));
    EXPECT_FALSE(verifyEd25519(bytes("af82"), signature, base64(examples[1].key)));
    EXPECT_FALSE(verifyEd25519(bytes("af82"), base64(examples[1].signature), key));
}

TEST(Ed25519Signature, WithAnyBitChangedDoesNotHold) {
    const std::string message = bytes(examples[2].message);
    for (int bit = 0; bit < 512; ++bit) {
        QByteArray signature = QByteArray::fromHex(examples[2].signature);
        signature[bit / 8] = static_cast<char>(signature[bit / 8] ^ (1 << (bit % 8)));
        EXPECT_FALSE(
            verifyEd25519(message, signature.toBase64().toStdString(), base64(examples[2].key)))
            << bit;
    }
}

TEST(Ed25519Signature, AndKeyAreBase64OfTheirLengths) {
    const std::string key = base64(examples[2].key);
    const std::string signature = base64(examples[2].signature);
    const std::string message = bytes(examples[2].message);
    EXPECT_TRUE(isEd25519Key(key));
    EXPECT_TRUE(isEd25519Signature(signature));
    EXPECT_FALSE(isEd25519Key(signature));
    EXPECT_FALSE(isEd25519Signature(key));
    for (const char* text : {"", "=", "AAAA", "no base64 at all!"}) {
        EXPECT_FALSE(isEd25519Key(text)) << text;
        EXPECT_FALSE(isEd25519Signature(text)) << text;
        EXPECT_FALSE(verifyEd25519(message, text, key)) << text;
        EXPECT_FALSE(verifyEd25519(message, signature, text)) << text;
    }
    EXPECT_FALSE(verifyEd25519(message, signature + "AAAA", key));
    EXPECT_FALSE(verifyEd25519(message, '!' + signature, key));
}

TEST(Ed25519Signature, MayHaveWhiteSpaceInIt) {
    std::string signature = base64(examples[2].signature);
    signature.insert(40, "\r\n\t ");
    EXPECT_TRUE(verifyEd25519(bytes(examples[2].message), "\n " + signature + " \n",
                              base64(examples[2].key) + '\n'));
}

}  // namespace
}  // namespace brimwatch
