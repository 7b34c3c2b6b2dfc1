#include "platform/linux/cloud_user_token.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "core/log_capture.h"
#include "platform/linux/scripted_key_store.h"

namespace brimwatch {
namespace {

class CloudUserTokenTest : public ::testing::Test {
  protected:
    // What happens while the user is asked; the store is locked until he has answered.
    KeyStatus signInWhile(const std::function<void()>& meanwhile) {
        bool isAsking = false;
        keys_.answer = [&](const std::string& call) -> std::optional<KeyStatus> {
            if (isAsking) return key_status::interactionNotAllowed;
            if (call != "update!") return std::nullopt;
            isAsking = true;
            meanwhile();
            isAsking = false;
            return std::nullopt;
        };
        const KeyStatus status = token_.set(SecretBytes("first"), KeyPrompt::allowed);
        keys_.answer = nullptr;
        return status;
    }
    std::string stored() const {
        return keys_.values.empty() ? "" : std::string(keys_.values.begin()->second.view());
    }

    const test::LogCapture quiet_;
    test::ScriptedKeyStore keys_;
    CloudUserToken token_{keys_, {.identifier = "c", .environment = "e", .apiToken = "a"}};
};

TEST_F(CloudUserTokenTest, WhatTheUserSignedInWithIsStored) {
    EXPECT_EQ(signInWhile([] {}), key_status::success);
    EXPECT_EQ(stored(), "first");
    keys_.calls.clear();
    EXPECT_EQ(token_.current().value.view(), "first");
    EXPECT_TRUE(keys_.calls.empty());
}

TEST_F(CloudUserTokenTest, ASuccessorThatComesWhileTheUserIsAskedIsStoredWithTheNextOccasion) {
    const auto succeed = [this] { token_.succeed(SecretBytes("first"), SecretBytes("second")); };
    EXPECT_EQ(signInWhile(succeed), key_status::success);
    EXPECT_EQ(token_.current().value.view(), "second");
    EXPECT_EQ(stored(), "second");
}

TEST_F(CloudUserTokenTest, ATokenThatIsForgottenWhileTheUserIsAskedIsNotKept) {
    signInWhile([this] { token_.forget(KeyPrompt::forbidden); });
    EXPECT_EQ(stored(), "");
    EXPECT_EQ(token_.current().status, key_status::itemNotFound);
}

TEST_F(CloudUserTokenTest, ATokenThatIsRefusedWhileTheUserIsAskedIsNotKept) {
    signInWhile([this] { token_.refuse(SecretBytes("first")); });
    EXPECT_EQ(stored(), "");
    EXPECT_EQ(token_.current().status, key_status::itemNotFound);
}

}  // namespace
}  // namespace brimwatch
