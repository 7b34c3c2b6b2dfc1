#include "publish/limits_cloud.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <limits>
#include <memory>

#include "harness/random.h"
#include "publish/aes_gcm.h"
#include "publish/snapshot_json.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::accountOf;
using test::CountingBytes;
using test::countingKey;
using test::failureOf;
using test::keyFilledWith;
using test::now;
using test::otherMac;
using test::secondsAgo;
using test::secondsAhead;
using test::Snapshot;
using test::thisMac;
using test::toHex;
using test::unreadable;

Snapshot documentOf(const MacId& mac, double ageSeconds) {
    Snapshot snapshot;
    snapshot.macs[mac] = {secondsAgo(ageSeconds), {accountOf("work", ageSeconds, {600})}};
    return snapshot;
}

std::string sealedText(std::string_view json) {
    return aes_gcm::seal(json, countingKey(), aes_gcm::Nonce{}).value();
}

// A reader of payloads that shares nothing with the program but the key: the cipher stream from
// AES block by block, the tag from multiplications in GF(2^128).
class IndependentReader {
  public:
    explicit IndependentReader(const SymmetricKey& key) : context_(::EVP_CIPHER_CTX_new()) {
        ::EVP_EncryptInit_ex(context_.get(), ::EVP_aes_256_ecb(), nullptr, key.bytes().data(),
                             nullptr);
        ::EVP_CIPHER_CTX_set_padding(context_.get(), 0);
    }

    std::optional<std::string> read(std::string_view payload) const {
        if (payload.size() < 28) return std::nullopt;
        const std::string_view nonce = payload.substr(0, 12);
        const std::string_view sealed = payload.substr(12, payload.size() - 28);
        if (tagOf(nonce, sealed) != payload.substr(payload.size() - 16)) return std::nullopt;
        std::string text(sealed);
        for (std::size_t index = 0; index < text.size(); ++index) {
            if (index % 16 == 0)
                stream_ = encrypted(counterBlock(nonce, static_cast<unsigned>(index / 16 + 2)));
            text[index] = static_cast<char>(text[index] ^ stream_[index % 16]);
        }
        return text;
    }

  private:
    using Block = std::array<unsigned char, 16>;
    struct Free {
        void operator()(EVP_CIPHER_CTX* context) const { ::EVP_CIPHER_CTX_free(context); }
    };

    static Block counterBlock(std::string_view nonce, unsigned counter) {
        Block block{};
        std::copy(nonce.begin(), nonce.end(), block.begin());
        for (unsigned index = 0; index < 4; ++index)
            block[12 + index] = static_cast<unsigned char>(counter >> (24 - 8 * index));
        return block;
    }

    Block encrypted(const Block& block) const {
        Block out{};
        int length = 0;
        ::EVP_EncryptUpdate(context_.get(), out.data(), &length, block.data(), 16);
        return out;
    }

    static Block product(const Block& a, Block b) {
        Block sum{};
        for (unsigned bit = 0; bit < 128; ++bit) {
            if (((a[bit / 8] >> (7 - bit % 8)) & 1) != 0)
                for (unsigned index = 0; index < 16; ++index)
                    sum[index] ^= b[index];
            const bool carries = (b[15] & 1) != 0;
            for (unsigned index = 15; index > 0; --index)
                b[index] = static_cast<unsigned char>((b[index] >> 1) | (b[index - 1] << 7));
            b[0] = static_cast<unsigned char>((b[0] >> 1) ^ (carries ? 0xE1 : 0));
        }
        return sum;
    }

    std::string tagOf(std::string_view nonce, std::string_view sealed) const {
        const Block hashKey = encrypted(Block{});
        Block hash{};
        for (std::size_t start = 0; start < sealed.size(); start += 16) {
            const std::string_view part = sealed.substr(start, 16);
            for (std::size_t index = 0; index < part.size(); ++index)
                hash[index] ^= static_cast<unsigned char>(part[index]);
            hash = product(hash, hashKey);
        }
        for (unsigned index = 0; index < 8; ++index)
            hash[8 + index] ^= static_cast<unsigned char>(8 * sealed.size() >> (56 - 8 * index));
        hash = product(hash, hashKey);
        const Block mask = encrypted(counterBlock(nonce, 1));
        std::string tag;
        for (unsigned index = 0; index < 16; ++index)
            tag += static_cast<char>(hash[index] ^ mask[index]);
        return tag;
    }

    std::unique_ptr<EVP_CIPHER_CTX, Free> context_;
    mutable Block stream_{};
};

TEST(LimitsCloudSeal, PutsTheNonceBeforeTheTextAndTheTagBehindIt) {
    const SealedPayload payload = LimitsCloud::seal(Snapshot(), countingKey(), CountingBytes(0x40));
    // Made once with AESGCM(key).encrypt(nonce, b'{"macs":{},"version":1}', None) of the Python
    // package "cryptography".
    EXPECT_EQ(toHex(payload.bytes),
              "404142434445464748494a4b"
              "999bc342454fa539b6b93b14ed01612810a93c7e8d04726c14dc1048a17171ae556f5d31496fd5");
}

TEST(LimitsCloudSeal, IsReadByAnIndependentReader) {
    const Snapshot document = documentOf(thisMac, 5);
    const SealedPayload payload = LimitsCloud::seal(document, countingKey());
    EXPECT_EQ(IndependentReader(countingKey()).read(payload.bytes), encodeSnapshot(document));
    EXPECT_FALSE(IndependentReader(keyFilledWith('x')).read(payload.bytes));
}

TEST(LimitsCloudSeal, GivesOtherBytesEachTime) {
    const Snapshot document = documentOf(thisMac, 5);
    const SealedPayload first = LimitsCloud::seal(document, countingKey());
    const SealedPayload second = LimitsCloud::seal(document, countingKey());
    EXPECT_NE(first, second);
    EXPECT_NE(first.bytes.substr(0, 12), second.bytes.substr(0, 12));
    EXPECT_EQ(LimitsCloud::open(first.bytes, countingKey()),
              LimitsCloud::open(second.bytes, countingKey()));
}

TEST(LimitsCloudSeal, WritesTheVersionOfTheDocument) {
    Snapshot document;
    document.version = 7;
    EXPECT_EQ(
        IndependentReader(countingKey()).read(LimitsCloud::seal(document, countingKey()).bytes),
        R"({"macs":{},"version":7})");
}

TEST(LimitsCloudSeal, LetsAnEncodingErrorThrough) {
    Snapshot document = documentOf(thisMac, 5);
    document.macs[thisMac].limits[0].sevenDay->usedPercentage =
        std::numeric_limits<double>::infinity();
    EXPECT_THROW(LimitsCloud::seal(document, countingKey()), LimitsCloud::EncodingError);
    EXPECT_THROW(LimitsCloud::encodedPayload(document), LimitsCloud::EncodingError);
}

TEST(LimitsCloudOpen, GivesTheSealedDocument) {
    const Snapshot document = documentOf(thisMac, 5);
    EXPECT_EQ(LimitsCloud::open(LimitsCloud::seal(document, countingKey()).bytes, countingKey()),
              document);
}

TEST(LimitsCloudOpen, IsUnreadableUnder28Bytes) {
    for (std::size_t size = 0; size < 28; ++size) {
        const std::string payload(size, 'x');
        EXPECT_EQ(failureOf([&] { LimitsCloud::open(payload, countingKey()); }), unreadable);
    }
}

TEST(LimitsCloudOpen, IsUnreadableWithTheKeyOfTheOtherChannel) {
    const SealedPayload payload = LimitsCloud::seal(documentOf(thisMac, 5), countingKey());
    EXPECT_EQ(failureOf([&] { LimitsCloud::open(payload.bytes, keyFilledWith('p')); }), unreadable);
}

TEST(LimitsCloudOpen, IsUnreadableWithOneAlteredBit) {
    const SealedPayload payload = LimitsCloud::seal(documentOf(thisMac, 5), countingKey());
    for (std::size_t index = 0; index < payload.bytes.size(); ++index) {
        std::string altered = payload.bytes;
        altered[index] = static_cast<char>(altered[index] ^ 0x10);
        EXPECT_EQ(failureOf([&] { LimitsCloud::open(altered, countingKey()); }), unreadable);
    }
}

TEST(LimitsCloudOpen, IsUnreadableWithoutProperJsonOfVersion1) {
    EXPECT_EQ(LimitsCloud::open(sealedText(R"({"macs":{},"version":1})"), countingKey()),
              Snapshot());
    for (const char* json :
         {"", "{", "[]", "null", R"({"macs":{},"version":2})", R"({"macs":{},"version":0})",
          R"({"version":1})", "{\"macs\":{\"\xFF\":1},\"version\":1}"}) {
        const std::string payload = sealedText(json);
        EXPECT_EQ(failureOf([&] { LimitsCloud::open(payload, countingKey()); }), unreadable)
            << json;
    }
}

TEST(LimitsCloudShare, OfAFreshRecordStandsAlone) {
    const std::vector<SubscriptionLimits> limits = {accountOf("b", 2), accountOf("a", 1)};
    const SealedPayload payload =
        LimitsCloud::payloadWithShare(std::nullopt, countingKey(), thisMac, limits, now);
    Snapshot expected;
    expected.macs[thisMac] = {now, limits};
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), expected);
}

TEST(LimitsCloudShare, StandsBesideThoseOfOtherMacs) {
    Snapshot expected = documentOf(otherMac, 1000);
    const SealedPayload payload =
        LimitsCloud::payloadWithShare(LimitsCloud::seal(expected, countingKey()).bytes,
                                      countingKey(), thisMac, {accountOf("work", 0)}, now);
    expected.macs[thisMac] = {now, {accountOf("work", 0)}};
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), expected);
}

TEST(LimitsCloudShare, ReplacesTheEarlierOneEntirely) {
    const SealedPayload earlier = LimitsCloud::payloadWithShare(
        std::nullopt, countingKey(), thisMac, {accountOf("a", 9), accountOf("b", 9, {600})}, now);
    const SealedPayload payload =
        LimitsCloud::payloadWithShare(earlier.bytes, countingKey(), thisMac, {}, secondsAhead(60));
    Snapshot expected;
    expected.macs[thisMac] = {secondsAhead(60), {}};
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), expected);
}

TEST(LimitsCloudShare, TakesThePlaceOfWhateverCannotBeRead) {
    Snapshot newer = documentOf(otherMac, 0);
    newer.version = 2;
    Snapshot expected;
    expected.macs[thisMac] = {now, {accountOf("work", 0)}};
    for (const std::string& unreadablePayload :
         {std::string(), std::string(27, 'x'), std::string(500, 'x'), sealedText("no JSON"),
          LimitsCloud::seal(documentOf(otherMac, 0), keyFilledWith('p')).bytes,
          LimitsCloud::seal(newer, countingKey()).bytes}) {
        const SealedPayload payload = LimitsCloud::payloadWithShare(
            unreadablePayload, countingKey(), thisMac, {accountOf("work", 0)}, now);
        EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), expected);
    }
}

TEST(LimitsCloudShare, DropsThoseOfMacsSilentFor30Days) {
    constexpr double month = 2'592'000;
    Snapshot document;
    document.macs[MacId{"older"}] = {secondsAgo(month + 1), {}};
    document.macs[MacId{"at the bound"}] = {secondsAgo(month), {}};
    document.macs[MacId{"a second younger"}] = {secondsAgo(month - 1), {}};
    document.macs[MacId{"of the future"}] = {secondsAhead(10 * month), {accountOf("a", 0)}};
    document.macs[thisMac] = {secondsAgo(2 * month), {}};
    const SealedPayload payload = LimitsCloud::payloadWithShare(
        LimitsCloud::seal(document, countingKey()).bytes, countingKey(), thisMac, {}, now);
    document.macs.erase(MacId{"older"});
    document.macs.erase(MacId{"at the bound"});
    document.macs[thisMac] = {now, {}};
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), document);
}

TEST(LimitsCloudShare, LetsAnEncodingErrorThrough) {
    SubscriptionLimits limits = accountOf("work", 0);
    limits.updatedAt = instantFromUnixSeconds(std::numeric_limits<double>::quiet_NaN());
    EXPECT_THROW(LimitsCloud::payloadWithShare(std::nullopt, countingKey(), thisMac, {limits}, now),
                 LimitsCloud::EncodingError);
}

TEST(LimitsCloudShare, IsSealedWithTheGivenRandomness) {
    const SealedPayload payload = LimitsCloud::payloadWithShare(
        std::nullopt, countingKey(), thisMac, {}, now, CountingBytes(0x40));
    EXPECT_EQ(toHex(payload.bytes.substr(0, 12)), "404142434445464748494a4b");
    EXPECT_EQ(toHex(LimitsCloud::payloadWithoutShare(std::nullopt, countingKey(), thisMac,
                                                     CountingBytes(0x40))
                        .bytes.substr(0, 12)),
              "404142434445464748494a4b");
}

TEST(LimitsCloudRemoval, TakesOneMacOutAndLeavesTheOthers) {
    const Snapshot others = documentOf(otherMac, 5'000'000);
    Snapshot document = others;
    document.macs[thisMac] = {now, {accountOf("work", 0)}};
    const SealedPayload payload = LimitsCloud::payloadWithoutShare(
        LimitsCloud::seal(document, countingKey()).bytes, countingKey(), thisMac);
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), others);
}

TEST(LimitsCloudRemoval, LeavesADocumentWithoutMacsBehindTheLastOne) {
    const SealedPayload payload = LimitsCloud::payloadWithoutShare(
        LimitsCloud::seal(documentOf(thisMac, 0), countingKey()).bytes, countingKey(), thisMac);
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), Snapshot());
}

TEST(LimitsCloudRemoval, SealsADocumentAnewThatHadNoShare) {
    const SealedPayload before = LimitsCloud::seal(documentOf(otherMac, 0), countingKey());
    const SealedPayload after =
        LimitsCloud::payloadWithoutShare(before.bytes, countingKey(), thisMac);
    EXPECT_NE(after, before);
    EXPECT_EQ(LimitsCloud::open(after.bytes, countingKey()), documentOf(otherMac, 0));
}

TEST(LimitsCloudRemoval, MakesAnEmptyDocumentWhereThereIsNone) {
    const SealedPayload payload =
        LimitsCloud::payloadWithoutShare(std::nullopt, countingKey(), thisMac);
    EXPECT_EQ(LimitsCloud::open(payload.bytes, countingKey()), Snapshot());
}

TEST(LimitsCloudRemoval, NeverOverwritesWhatItCannotRead) {
    Snapshot newer;
    newer.version = 2;
    for (const std::string& payload :
         {std::string(), std::string(500, 'x'), sealedText("no JSON"),
          LimitsCloud::seal(documentOf(thisMac, 0), keyFilledWith('p')).bytes,
          LimitsCloud::seal(newer, countingKey()).bytes}) {
        EXPECT_EQ(
            failureOf([&] { LimitsCloud::payloadWithoutShare(payload, countingKey(), thisMac); }),
            unreadable);
    }
}

// Several Macs at one record, each at its own pace, with clocks that jump and keys that are wrong
// now and then, beside a map that is told the same.
TEST(LimitsCloudShare, SurvivesAnyOrderOfSavesAndRemovals) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::vector<MacId> macs = {thisMac, otherMac, MacId{"a third"}};
    constexpr std::int64_t month = 2'592'000;
    std::optional<std::string> record;
    Snapshot expected;
    double clock = test::nowSeconds;
    for (int round = 0; round < 2000; ++round) {
        clock += static_cast<double>(random.oneIn(10) ? random.between(-month, month)
                                                      : random.between(0, month / 8));
        const Instant moment = instantFromUnixSeconds(clock);
        const MacId& mac = macs[random.below(macs.size())];
        if (random.oneIn(20)) {
            record = std::string(random.below(51), 'x');
            expected.macs.clear();
            EXPECT_EQ(
                failureOf([&] { LimitsCloud::payloadWithoutShare(record, countingKey(), mac); }),
                unreadable);
        }
        const bool isReadable = record && record->size() > 50;
        if (isReadable && random.oneIn(3)) {
            record = LimitsCloud::payloadWithoutShare(record, countingKey(), mac).bytes;
            expected.macs.erase(mac);
        } else {
            const std::vector<SubscriptionLimits> limits(random.below(3),
                                                         accountOf(mac.text, round, {600}));
            record =
                LimitsCloud::payloadWithShare(record, countingKey(), mac, limits, moment).bytes;
            expected.macs[mac] = {moment, limits};
            for (const MacId& each : macs) {
                const auto found = expected.macs.find(each);
                if (found == expected.macs.end()) continue;
                if (clock - unixSeconds(found->second.sentAt) >= month) expected.macs.erase(found);
            }
        }
        ASSERT_EQ(LimitsCloud::open(*record, countingKey()), expected) << "round " << round;
    }
}

// Made once with hmac.new(key, message, hashlib.sha256).hexdigest() of Python.
TEST(LimitsCloudRecordName, DependsOnTheKeyAndTheChannelAlone) {
    EXPECT_EQ(LimitsCloud::recordName(countingKey()),
              "ls-e75c55ee01db0cb8b0ab05a9f7860586c7f2deb3a8848a34d4b0d0efd7e65996");
    EXPECT_EQ(LimitsCloud::recordName(keyFilledWith('\0')),
              "ls-c1795938629987ed7583f6268d1fd60524910d68c82ca14ba08d92c0e463b44a");
    EXPECT_EQ(LimitsCloud::recordName(keyFilledWith('\xFF')),
              "ls-bfb3741c64da49b27ff295aad16c53599e1e8c8591fd7b0552a6f5152178a8b7");
    EXPECT_EQ(LimitsCloud::phoneRecordName(countingKey()),
              "lp-683e2a36a03fe0b72bbc42be3db0a85ea342b8fd22093c82d236ddc7528e4506");
    EXPECT_EQ(LimitsCloud::phoneRecordName(keyFilledWith('\0')),
              "lp-b528dfd1f3cabcca5adc2f56aa971416070d02e4e873a23faed3baa6a50f6af2");
    EXPECT_EQ(LimitsCloud::phoneRecordName(keyFilledWith('\xFF')),
              "lp-16333789a177cb5231a06a1eeaec3483803226d2ce05c722966b9ba79f77270d");
}

TEST(LimitsCloudFailures, AreToldApart) {
    using Failure = LimitsCloud::Failure;
    EXPECT_EQ(Failure(unreadable), Failure(unreadable));
    EXPECT_FALSE(Failure(unreadable) == Failure(Failure::Reason::noAccount));
    EXPECT_STRNE(Failure(unreadable).what(), Failure(Failure::Reason::noAccount).what());
}

}  // namespace
}  // namespace brimwatch
