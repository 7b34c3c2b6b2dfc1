#include "publish/aes_gcm.h"

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <sys/mman.h>

#include <new>

#include "harness/random.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::countingKey;
using test::fromHex;
using test::keyFilledWith;
using test::toHex;

aes_gcm::Nonce nonceOf(std::string_view bytes) {
    aes_gcm::Nonce nonce{};
    std::copy(bytes.begin(), bytes.end(), nonce.begin());
    return nonce;
}

aes_gcm::Nonce countingNonce() {
    return nonceOf(fromHex("404142434445464748494a4b"));
}

// Test cases 13 to 15 of "The Galois/Counter Mode of Operation" (McGrew and Viega).
TEST(AesGcm, GivesThePublishedAnswers) {
    const aes_gcm::Nonce zeros{};
    EXPECT_EQ(toHex(aes_gcm::seal("", keyFilledWith('\0'), zeros).value()),
              "000000000000000000000000"
              "530f8afbc74536b9a963b4f1c4cb738b");
    EXPECT_EQ(toHex(aes_gcm::seal(std::string(16, '\0'), keyFilledWith('\0'), zeros).value()),
              "000000000000000000000000"
              "cea7403d4d606b6e074ec5d3baf39d18"
              "d0d1c8a799996bf0265b98b5d48ab919");
    const std::string feff = fromHex("feffe9928665731c6d6a8f9467308308");
    EXPECT_EQ(toHex(aes_gcm::seal(
                        fromHex("d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
                                "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255"),
                        test::keyOf(feff + feff), nonceOf(fromHex("cafebabefacedbaddecaf888")))
                        .value()),
              "cafebabefacedbaddecaf888"
              "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
              "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad"
              "b094dac5d93471bdec1a502270e3cc6c");
}

// Made once with AESGCM(key).encrypt(nonce, text, None) of the Python package "cryptography".
TEST(AesGcm, GivesTheAnswersOfASecondProgram) {
    EXPECT_EQ(
        toHex(aes_gcm::seal(R"({"macs":{},"version":1})", countingKey(), countingNonce()).value()),
        "404142434445464748494a4b"
        "999bc342454fa539b6b93b14ed01612810a93c7e8d04726c14dc1048a17171ae556f5d31496fd5");
    EXPECT_EQ(toHex(aes_gcm::seal("", countingKey(), countingNonce()).value()),
              "404142434445464748494a4bc9b3c23ebecd69c4c2d87bc27ee34810");
}

TEST(AesGcm, OpensWhatItSealed) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 4095U, 100'000U}) {
        std::string text(size, '\0');
        for (char& byte : text)
            byte = static_cast<char>(random.bits());
        const auto sealed = aes_gcm::seal(text, countingKey(), countingNonce());
        EXPECT_EQ(sealed.value().size(), size + 28);
        EXPECT_EQ(aes_gcm::open(*sealed, countingKey()), text);
    }
}

TEST(AesGcm, OpensNothingThatWasAlteredAnywhere) {
    const std::string sealed = aes_gcm::seal("figures", countingKey(), countingNonce()).value();
    for (std::size_t bit = 0; bit < 8 * sealed.size(); ++bit) {
        std::string altered = sealed;
        altered[bit / 8] = static_cast<char>(altered[bit / 8] ^ (1 << bit % 8));
        EXPECT_FALSE(aes_gcm::open(altered, countingKey())) << bit;
    }
}

TEST(AesGcm, OpensNothingThatWasCutOrExtended) {
    const std::string sealed = aes_gcm::seal("figures", countingKey(), countingNonce()).value();
    for (std::size_t size = 0; size < sealed.size(); ++size) {
        EXPECT_FALSE(aes_gcm::open(sealed.substr(0, size), countingKey())) << size;
        EXPECT_FALSE(aes_gcm::open(sealed.substr(sealed.size() - size), countingKey())) << size;
    }
    EXPECT_FALSE(aes_gcm::open(sealed + '\0', countingKey()));
}

TEST(AesGcm, OpensNothingWithAnotherKey) {
    const std::string sealed = aes_gcm::seal("figures", countingKey(), countingNonce()).value();
    EXPECT_FALSE(aes_gcm::open(sealed, keyFilledWith('\0')));
}

TEST(AesGcm, LeavesNoErrorsBehindForOthersAndTakesNoneAway) {
    ::ERR_clear_error();
    EXPECT_FALSE(aes_gcm::open(std::string(40, 'x'), countingKey()));
    EXPECT_EQ(::ERR_peek_error(), 0U);
    ERR_raise(ERR_LIB_USER, 7);
    const unsigned long somebodysError = ::ERR_peek_error();
    EXPECT_FALSE(aes_gcm::open(std::string(40, 'x'), countingKey()));
    EXPECT_EQ(::ERR_get_error(), somebodysError);
    EXPECT_EQ(::ERR_get_error(), 0U);
}

// Bytes that may not even be looked at.
class ForbiddenBytes {
  public:
    explicit ForbiddenBytes(std::size_t size)
        : size_(size),
          bytes_(::mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1,
                        0)) {
        if (bytes_ == MAP_FAILED) throw std::bad_alloc();
    }
    ForbiddenBytes(const ForbiddenBytes&) = delete;
    ForbiddenBytes& operator=(const ForbiddenBytes&) = delete;
    ~ForbiddenBytes() { ::munmap(bytes_, size_); }

    std::string_view view() const { return {static_cast<const char*>(bytes_), size_}; }

  private:
    std::size_t size_;
    void* bytes_;
};

TEST(AesGcm, RefusesTextsThatAreTooLongForTheCipher) {
    const ForbiddenBytes bytes(std::size_t{1} << 31U);
    EXPECT_FALSE(aes_gcm::seal(bytes.view(), countingKey(), countingNonce()));
    EXPECT_FALSE(aes_gcm::open(bytes.view(), countingKey()));
}

}  // namespace
}  // namespace brimwatch
