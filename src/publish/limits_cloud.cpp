#include "publish/limits_cloud.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>
#include <chrono>
#include <utility>

#include "publish/aes_gcm.h"
#include "publish/snapshot_json.h"

namespace brimwatch {
namespace {

constexpr std::chrono::seconds shareLifetime{2'592'000};

using Snapshot = LimitsCloud::Snapshot;

LimitsCloud::Failure unreadable() {
    return LimitsCloud::Failure(LimitsCloud::Failure::Reason::unreadable);
}

Snapshot openOrEmpty(std::optional<std::string_view> payload, const SymmetricKey& key) {
    if (!payload) return {};
    try {
        return LimitsCloud::open(*payload, key);
    } catch (const LimitsCloud::Failure&) {
        return {};
    }
}

std::string hexadecimal(const unsigned char* bytes, std::size_t count) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        text += digits[bytes[index] >> 4U];
        text += digits[bytes[index] & 0xFU];
    }
    return text;
}

std::string recordNameOf(std::string_view prefix, std::string_view message,
                         const SymmetricKey& key) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> code{};
    unsigned int length = 0;
    ::HMAC(::EVP_sha256(), key.bytes().data(), static_cast<int>(key.bytes().size()),
           reinterpret_cast<const unsigned char*>(message.data()), message.size(), code.data(),
           &length);
    return std::string(prefix) + hexadecimal(code.data(), length);
}

}  // namespace

const char* LimitsCloud::Failure::what() const noexcept {
    return reason_ == Reason::noAccount ? "작업을 완료할 수 없습니다. (LimitsCloud.Failure 오류 0)"
                                        : "작업을 완료할 수 없습니다. (LimitsCloud.Failure 오류 1)";
}

const char* LimitsCloud::EncodingError::what() const noexcept {
    return "데이터가 올바른 포맷이 아니므로 쓸 수 없습니다.";
}

const char* LimitsCloud::PublicationStopped::what() const noexcept {
    return "the publication was stopped";
}

SealedPayload LimitsCloud::seal(const Snapshot& snapshot, const SymmetricKey& key,
                                const RandomBytes& randomBytes) {
    aes_gcm::Nonce nonce{};
    randomBytes(nonce);
    std::optional<std::string> sealed = aes_gcm::seal(encodedPayload(snapshot), key, nonce);
    if (!sealed) throw unreadable();
    return {*std::move(sealed)};
}

Snapshot LimitsCloud::open(std::string_view payload, const SymmetricKey& key) {
    const std::optional<std::string> json = aes_gcm::open(payload, key);
    std::optional<Snapshot> snapshot = json ? decodeSnapshot(*json) : std::nullopt;
    if (!snapshot) throw unreadable();
    return *std::move(snapshot);
}

SealedPayload LimitsCloud::payloadWithShare(std::optional<std::string_view> payload,
                                            const SymmetricKey& key, const MacId& macId,
                                            std::vector<SubscriptionLimits> limits, Instant now,
                                            const RandomBytes& randomBytes) {
    Snapshot snapshot = openOrEmpty(payload, key);
    snapshot.macs[macId] = {.sentAt = now, .limits = std::move(limits)};
    std::erase_if(snapshot.macs,
                  [now](const auto& entry) { return now - entry.second.sentAt >= shareLifetime; });
    return seal(snapshot, key, randomBytes);
}

SealedPayload LimitsCloud::payloadWithoutShare(std::optional<std::string_view> payload,
                                               const SymmetricKey& key, const MacId& macId,
                                               const RandomBytes& randomBytes) {
    Snapshot snapshot = payload ? open(*payload, key) : Snapshot();
    snapshot.macs.erase(macId);
    return seal(snapshot, key, randomBytes);
}

std::string LimitsCloud::recordName(const SymmetricKey& key) {
    return recordNameOf("ls-", "limits-v1", key);
}

std::string LimitsCloud::phoneRecordName(const SymmetricKey& key) {
    return recordNameOf("lp-", "phone-limits-v1", key);
}

}  // namespace brimwatch
