// A payload, read by a program that is none of ours.

#include <gtest/gtest.h>

#include "harness/process.h"
#include "publish/limits_cloud.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::countingKey;
using test::toHex;

test::ProcessResult readBySecondReader(const SealedPayload& payload, const SymmetricKey& key) {
    test::ProcessRequest request;
    request.program = BRIMWATCH_NODE;
    request.arguments = {BRIMWATCH_SECOND_READER, toHex(key.bytes().view()), toHex(payload.bytes)};
    return test::runProcess(request);
}

SealedPayload examplePayload() {
    LimitsCloud::Snapshot snapshot;
    SubscriptionLimits limits = test::accountOf("work", 0, {600, 300});
    limits.provider = SubscriptionLimits::Provider::codex;
    limits.displayName = "회사 \"🚀\"";
    limits.updatedAt = instantFromUnixSeconds(1'790'000'100);
    limits.sevenDay = UsageWindow{33.1, instantFromUnixSeconds(1'790'090'100.5)};
    snapshot.macs[test::thisMac] = {instantFromUnixSeconds(1'790'000'123.456789), {limits}};
    return LimitsCloud::seal(snapshot, countingKey());
}

TEST(SecondReader, ReadsFiguresAndComputesTheSameRecordNames) {
    const test::ProcessResult result = readBySecondReader(examplePayload(), countingKey());
    EXPECT_TRUE(result.exitedWith(0)) << result.errorOutput;
    EXPECT_EQ(result.output, LimitsCloud::recordName(countingKey()) + "\n" +
                                 LimitsCloud::phoneRecordName(countingKey()) +
                                 "\n1\n"
                                 "11111111-2222-3333-4444-555555555555 1790000123.456789\n"
                                 "codex work 회사 \"🚀\" 33.1 1790090100.5 1790000100 2 false\n");
}

TEST(SecondReader, ReadsNothingWithAnotherKey) {
    const test::ProcessResult result =
        readBySecondReader(examplePayload(), test::keyFilledWith('x'));
    EXPECT_FALSE(result.exitedWith(0));
    EXPECT_EQ(result.output, "");
}

}  // namespace
}  // namespace brimwatch
