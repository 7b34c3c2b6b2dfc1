// Keys, Macs and accounts for tests.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "limits/usage_examples.h"
#include "publish/limits_cloud.h"
#include "publish/symmetric_key.h"

namespace brimwatch::test {

inline SymmetricKey keyOf(std::string_view bytes) {
    return SymmetricKey::fromBytes(bytes).value();
}

inline SymmetricKey keyFilledWith(char byte) {
    return keyOf(std::string(SymmetricKey::byteCount, byte));
}

// 00 01 02 ... 1f
inline SymmetricKey countingKey() {
    std::string bytes;
    for (int value = 0; value < 32; ++value)
        bytes += static_cast<char>(value);
    return keyOf(bytes);
}

// As many bytes as are wanted, one higher than the other.
class CountingBytes {
  public:
    explicit CountingBytes(unsigned char first) : next_(first) {}

    void operator()(std::span<unsigned char> bytes) {
        for (unsigned char& byte : bytes)
            byte = next_++;
    }

  private:
    unsigned char next_;
};

inline std::string fromHex(std::string_view text) {
    std::string bytes;
    for (std::size_t index = 0; index + 1 < text.size(); index += 2)
        bytes += static_cast<char>(std::stoi(std::string(text.substr(index, 2)), nullptr, 16));
    return bytes;
}

inline std::string toHex(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4U];
        text += digits[static_cast<unsigned char>(byte) & 0xFU];
    }
    return text;
}

inline const MacId thisMac{"11111111-2222-3333-4444-555555555555"};
inline const MacId otherMac{"AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE"};

// An account whose figures are that old, with one sample for each of the ages.
inline SubscriptionLimits accountOf(std::string name, double ageSeconds,
                                    std::initializer_list<double> sampleAges = {}) {
    SubscriptionLimits limits = weeklyRecord(37.5);
    limits.account = std::move(name);
    limits.updatedAt = secondsAgo(ageSeconds);
    if (sampleAges.size() == 0) return limits;
    limits.recentUsageHistory.emplace();
    for (const double age : sampleAges)
        limits.recentUsageHistory->push_back(weeklySample(age, 12.5));
    return limits;
}

using Snapshot = LimitsCloud::Snapshot;

template <class Action>
LimitsCloud::Failure::Reason failureOf(Action action) {
    try {
        action();
    } catch (const LimitsCloud::Failure& failure) {
        return failure.reason();
    }
    throw std::logic_error("nothing failed");
}

inline constexpr auto unreadable = LimitsCloud::Failure::Reason::unreadable;

}  // namespace brimwatch::test
