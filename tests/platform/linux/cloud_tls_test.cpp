// Who is spoken to about records: nobody whose certificate the system does not trust.

#include <gtest/gtest.h>

#include "platform/linux/cloud_test.h"
#include "platform/linux/update_server.h"

namespace brimwatch {
namespace {

using test::UpdateServer;

class CloudTlsTest : public test::CloudTest {
  protected:
    void SetUp() override {
        CloudTest::SetUp();
        signIn("me");
    }
    CloudError failure(const std::string& address) {
        CloudContainer there = container();
        there.address = address;
        CloudKitRecordDatabase database(there, *token_);
        const auto record = wait(database.record("a"));
        EXPECT_FALSE(record);
        return record ? CloudError{.code = -1} : record.error();
    }
};

TEST_F(CloudTlsTest, AServerThatIsTrustedHearsTheQuestion) {
    const UpdateServer known;
    EXPECT_EQ(failure(known.origin()).code, 15);
    ASSERT_EQ(known.requests().size(), 1U);
    EXPECT_TRUE(known.requests().front().path.starts_with("/database/1/"));
}

TEST_F(CloudTlsTest, ACertificateThatNobodyVouchesForIsRefusedBeforeAnythingIsSaid) {
    const UpdateServer unknown(UpdateServer::Trust::unknown);
    const CloudError refused = failure(unknown.origin());
    EXPECT_EQ(refused.code, 4);
    EXPECT_EQ(refused.description, "서버에 연결하지 못했어요.");
    settle();
    EXPECT_TRUE(unknown.requests().empty());
}

TEST_F(CloudTlsTest, ACertificateForAnotherNameIsRefusedBeforeAnythingIsSaid) {
    const UpdateServer another(UpdateServer::Trust::trustedAsAnother);
    EXPECT_EQ(failure(another.origin()).code, 4);
    settle();
    EXPECT_TRUE(another.requests().empty());
}

}  // namespace
}  // namespace brimwatch
