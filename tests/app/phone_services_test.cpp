// What the system gives to the publishers to phones.

#include "app/phone_services.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QCoroTask>
#include <cstdlib>
#include <memory>

#include "app/user_keys.h"
#include "core/log_capture.h"
#include "harness/environment_list.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

const BundleInfo complete = {.keychainAccessGroup = "group",
                             .cloudContainer = "iCloud.net.example.test",
                             .cloudEnvironment = "development",
                             .cloudApiToken = "token"};

class PhoneServicesTest : public ::testing::Test {
  protected:
    std::unique_ptr<PhoneServices> make(const BundleInfo& bundleInfo) {
        return std::make_unique<PhoneServices>(keys_->store(), bundleInfo,
                                               [](const QUrl&) { return false; });
    }

    int argumentCount_ = 1;
    char name_[9] = "app_test";
    char* arguments_[2] = {name_, nullptr};
    QCoreApplication application_{argumentCount_, arguments_};
    const test::LogCapture quiet_;
    test::TemporaryFolder folder_;
    test::EnvironmentList environment_ = {{"HOME", folder_.file("home")}};
    PosixFileSystem files_;
    std::unique_ptr<UserKeys> keys_ = UserKeys::open(environment_.view(), files_);
};

TEST_F(PhoneServicesTest, ABuildWithATokenHasTheRightToPublish) {
    EXPECT_EQ(make(complete)->right(), PublishingRight::granted);
}

TEST_F(PhoneServicesTest, ABuildWithoutATokenDoesNotHaveIt) {
    BundleInfo development = complete;
    development.cloudApiToken.clear();
    EXPECT_EQ(make(development)->right(), PublishingRight::missing);
}

TEST_F(PhoneServicesTest, TheContainerIsThatOfTheBuild) {
    EXPECT_EQ(make(complete)->container(), (CloudContainer{.identifier = "iCloud.net.example.test",
                                                           .environment = "development",
                                                           .apiToken = "token"}));
}

TEST_F(PhoneServicesTest, TheServiceIsTheProvidersUnlessTheBuildNamesAnother) {
    EXPECT_EQ(make(complete)->container().address, "https://api.apple-cloudkit.com");
    BundleInfo other = complete;
    other.cloudService = "https://records.example";
    EXPECT_EQ(make(other)->container().address, "https://records.example");
}

TEST_F(PhoneServicesTest, TheBrowserReturnsToTheAddressOfTheBuild) {
    const auto endOfSignIn = [this](const BundleInfo& bundleInfo) {
        const std::unique_ptr<PhoneServices> services = make(bundleInfo);
        return QCoro::waitFor(services->signIn().signIn()).end;
    };
    BundleInfo unreachable = complete;
    unreachable.cloudService = "http://127.0.0.1:1";
    EXPECT_EQ(endOfSignIn(unreachable), CloudSignInResult::End::addressUnusable);
    unreachable.cloudSignInRedirect = "http://127.0.0.1:28417/signed-in";
    EXPECT_EQ(endOfSignIn(unreachable), CloudSignInResult::End::serverRefused);
}

TEST_F(PhoneServicesTest, ABuildWithoutItsIdentifiersEndsTheProcess) {
    BundleInfo noGroup = complete;
    noGroup.keychainAccessGroup.clear();
    EXPECT_EXIT(make(noGroup), ::testing::ExitedWithCode(EXIT_FAILURE), "QMKeychainAccessGroup");
    BundleInfo noContainer = complete;
    noContainer.cloudContainer.clear();
    EXPECT_EXIT(make(noContainer), ::testing::ExitedWithCode(EXIT_FAILURE), "QMICloudContainer");
}

}  // namespace
}  // namespace brimwatch
