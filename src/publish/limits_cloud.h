// What a phone receives: a document with a share for each Mac that has the key, sealed so that only
// a holder of the key can read it, or find the record that carries it.
//
// Shares stand side by side and are never joined. The formats are told in docs/formats.md.
// Functions of their arguments, for any thread; those that can fail for several reasons throw the
// failures below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "limits/subscription_limits.h"
#include "publish/mac_id.h"
#include "publish/random_bytes.h"
#include "publish/symmetric_key.h"
#include "support/instant.h"

namespace brimwatch {

// A document that was sealed: nonce, ciphertext and tag, one behind the other.
struct SealedPayload {
    std::string bytes;

    bool operator==(const SealedPayload&) const = default;
};

struct LimitsCloud {
    struct Snapshot {
        static constexpr std::int64_t supportedVersion = 1;

        struct Mac {
            Instant sentAt;                          // when the send of this share began
            std::vector<SubscriptionLimits> limits;  // in the order of the model

            bool operator==(const Mac&) const = default;
        };

        std::int64_t version = supportedVersion;
        std::map<MacId, Mac> macs;

        bool operator==(const Snapshot&) const = default;
    };

    // A history that may be dropped from a document that is too large.
    struct Candidate {
        MacId mac;
        std::size_t index = 0;  // in the limits of that Mac
        bool latest = false;    // that Mac has the newest copy of the account
        Instant sentAt;         // of that Mac

        bool operator==(const Candidate&) const = default;
    };

    class Failure : public std::exception {
      public:
        enum class Reason {
            noAccount,   // nobody is signed in to the cloud
            unreadable,  // a payload could not be opened or made
        };

        explicit Failure(Reason reason) noexcept : reason_(reason) {}

        Reason reason() const noexcept { return reason_; }
        const char* what() const noexcept override;

        friend bool operator==(const Failure& a, const Failure& b) {
            return a.reason_ == b.reason_;
        }

      private:
        Reason reason_;
    };

    // A number that JSON has no form for: an infinity, or none at all.
    class EncodingError : public std::exception {
      public:
        const char* what() const noexcept override;
    };

    // A save learnt that it is no longer wanted. Nobody shows it.
    class PublicationStopped : public std::exception {
      public:
        const char* what() const noexcept override;
    };

    static constexpr std::size_t nonceBytes = 12;
    static constexpr std::size_t tagBytes = 16;
    static constexpr std::size_t largestPayloadBytes = 900'000;
    static constexpr std::size_t largestDocumentBytes = largestPayloadBytes - nonceBytes - tagBytes;

    // Reduced to fit, as `encodedPayload` does, with a new nonce each time. Throws `EncodingError`,
    // or `Failure` as unreadable.
    static SealedPayload seal(const Snapshot& snapshot, const SymmetricKey& key,
                              const RandomBytes& randomBytes = fillWithRandomBytes);

    // An account that can't be read is left out; whatever else is wrong throws `Failure` as
    // unreadable.
    static Snapshot open(std::string_view payload, const SymmetricKey& key);

    // The JSON text. One that is too large loses what phones look at least: samples of more than
    // six hours and ten minutes before their account's figures, then whole histories, those of
    // outdated copies first. Figures are never dropped, nor a Mac, so the text can still be too
    // large. Throws `EncodingError`.
    static std::string encodedPayload(const Snapshot& snapshot);

    // What may be dropped, the least useful first.
    static std::vector<Candidate> candidates(const Snapshot& snapshot);

    // The payload of a record in which the share of this Mac is replaced, and those of 30 days or
    // more are dropped. Where nothing can be read the document starts anew. Throws as `seal` does.
    static SealedPayload payloadWithShare(std::optional<std::string_view> payload,
                                          const SymmetricKey& key, const MacId& macId,
                                          std::vector<SubscriptionLimits> limits, Instant now,
                                          const RandomBytes& randomBytes = fillWithRandomBytes);

    // The payload of a record without the share of this Mac, sealed anew also if it had none. A
    // payload that is there but can't be read throws `Failure` as unreadable: it must not be
    // overwritten. Throws as `seal` does, too.
    static SealedPayload payloadWithoutShare(std::optional<std::string_view> payload,
                                             const SymmetricKey& key, const MacId& macId,
                                             const RandomBytes& randomBytes = fillWithRandomBytes);

    // The names of the records for iPhones and for Android phones: 67 ASCII characters.
    static std::string recordName(const SymmetricKey& key);
    static std::string phoneRecordName(const SymmetricKey& key);
};

}  // namespace brimwatch
