// What publishing costs beside the least that it could: the hash or the cipher over the same bytes.
//
// Each pair is measured in one run; the table of ratios comes last.

#include <benchmark/benchmark.h>
#include <openssl/sha.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/shortest_times.h"
#include "publish/aes_gcm.h"
#include "publish/limits_cloud.h"
#include "publish/limits_wire.h"
#include "publish/publish_schedule.h"
#include "publish/snapshot_json.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

using Snapshot = LimitsCloud::Snapshot;

constexpr double nowSeconds = 1'790'000'000;
constexpr int samplesOfADay = 300;
constexpr double secondsBetweenSamples = 288;

SymmetricKey key() {
    return SymmetricKey::fromBytes(std::string(SymmetricKey::byteCount, 'k')).value();
}

// A day of an account. Figures have the digits that providers send: Claude Code some, Codex none.
SubscriptionLimits accountOf(int number) {
    SubscriptionLimits limits;
    const bool isClaude = number % 2 == 0;
    limits.provider =
        isClaude ? SubscriptionLimits::Provider::claude : SubscriptionLimits::Provider::codex;
    limits.account = "work-" + std::to_string(number);
    limits.planTier = "Max 20배";
    RecentUsageSamples samples;
    for (int index = 0; index < samplesOfADay; ++index) {
        const double age = secondsBetweenSamples * (samplesOfADay - 1 - index);
        const double used = isClaude ? index / 7.0 : index / 10;
        RecentUsageSample sample;
        sample.updatedAt = instantFromUnixSeconds(nowSeconds - age);
        sample.fiveHour = UsageWindow{used, instantFromUnixSeconds(nowSeconds + 7200)};
        sample.sevenDay = UsageWindow{used / 2, instantFromUnixSeconds(nowSeconds + 90'000)};
        sample.planTier = limits.planTier;
        samples.push_back(sample);
    }
    limits.fiveHour = samples.back().fiveHour;
    limits.sevenDay = samples.back().sevenDay;
    limits.updatedAt = instantFromUnixSeconds(nowSeconds);
    limits.recentUsageHistory = samples;
    return limits;
}

std::vector<SubscriptionLimits> accountsOf(int count) {
    std::vector<SubscriptionLimits> accounts;
    for (int number = 0; number < count; ++number)
        accounts.push_back(accountOf(number));
    return accounts;
}

// Five accounts a Mac, and a name that fills the document up to the wanted size.
Snapshot documentOf(std::size_t bytes) {
    Snapshot snapshot;
    for (int number = 0; encodeSnapshot(snapshot).size() < bytes; ++number) {
        Snapshot::Mac& mac = snapshot.macs[MacId{"MAC-" + std::to_string(number / 5)}];
        mac.sentAt = instantFromUnixSeconds(nowSeconds);
        mac.limits.push_back(accountOf(number));
    }
    snapshot.macs.rbegin()->second.limits.pop_back();
    std::optional<std::string>& name = snapshot.macs.begin()->second.limits[0].displayName;
    name = "";
    name = std::string(bytes - encodeSnapshot(snapshot).size(), 'x');
    return snapshot;
}

Snapshot fullDocument() {
    return documentOf(LimitsCloud::largestDocumentBytes);
}

Snapshot documentThreeTimesTooLarge() {
    return documentOf(3 * LimitsCloud::largestDocumentBytes);
}

std::string encodedAccounts() {
    std::string json = R"({"limits":[)";
    for (const SubscriptionLimits& limits : accountsOf(10)) {
        if (json.back() != '[') json += ',';
        appendLimits(json, limits);
    }
    return json + "]}";
}

void hashAccounts(benchmark::State& state) {
    const std::string json = encodedAccounts();
    for ([[maybe_unused]] const auto round : state) {
        ContentDigest digest{};
        ::SHA256(reinterpret_cast<const unsigned char*>(json.data()), json.size(), digest.data());
        benchmark::DoNotOptimize(digest);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(json.size()));
}

void digestAccounts(benchmark::State& state) {
    const std::vector<SubscriptionLimits> accounts = accountsOf(10);
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(PublishSchedule::contentDigest(accounts));
}

void encryptDocument(benchmark::State& state) {
    const std::string json = encodeSnapshot(fullDocument());
    if (json.size() != LimitsCloud::largestDocumentBytes) std::abort();
    const aes_gcm::Nonce nonce{};
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(aes_gcm::seal(json, key(), nonce));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(json.size()));
}

void sealDocument(benchmark::State& state) {
    const Snapshot document = fullDocument();
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(LimitsCloud::seal(document, key()));
}

void parseDocument(benchmark::State& state) {
    const std::string json = encodeSnapshot(fullDocument());
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(parseJson(json));
}

void openDocument(benchmark::State& state) {
    const SealedPayload payload = LimitsCloud::seal(fullDocument(), key());
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(LimitsCloud::open(payload.bytes, key()));
}

void encodeLargeDocument(benchmark::State& state) {
    const Snapshot document = documentThreeTimesTooLarge();
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(encodeSnapshot(document));
}

// Such a document is narrowed first, and then loses most of its histories.
void reduceLargeDocument(benchmark::State& state) {
    Snapshot document = documentThreeTimesTooLarge();
    for (auto& [id, mac] : document.macs) {
        for (SubscriptionLimits& limits : mac.limits)
            for (RecentUsageSample& sample : *limits.recentUsageHistory)
                sample.updatedAt = limits.updatedAt;
    }
    if (LimitsCloud::encodedPayload(document).size() > LimitsCloud::largestDocumentBytes)
        std::abort();
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(LimitsCloud::encodedPayload(document));
}

void narrowLargeDocument(benchmark::State& state) {
    const Snapshot document = documentThreeTimesTooLarge();
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(LimitsCloud::encodedPayload(document));
}

void registerBenchmarks() {
    const auto add = [](const char* name, auto function) {
        return benchmark::RegisterBenchmark(name, function)->Repetitions(5);
    };
    add("SHA-256, 10 accounts", hashAccounts);
    add("digest, 10 accounts", digestAccounts);
    add("AES-GCM, full document", encryptDocument);
    add("seal, full document", sealDocument);
    add("parse, full document", parseDocument);
    add("open, full document", openDocument);
    add("encode, three times too large", encodeLargeDocument);
    add("narrow, three times too large", narrowLargeDocument);
    add("drop, three times too large", reduceLargeDocument);
}

}  // namespace
}  // namespace brimwatch

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    brimwatch::registerBenchmarks();
    brimwatch::bench::ShortestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    std::printf("\n");
    times.printRatio("digest, 10 accounts", "SHA-256, 10 accounts", "goal: at most 3");
    times.printRatio("seal, full document", "AES-GCM, full document", "");
    times.printRatio("open, full document", "parse, full document", "");
    times.printRatio("narrow, three times too large", "encode, three times too large", "");
    times.printRatio("drop, three times too large", "encode, three times too large", "");
    return 0;
}
