#include "platform/linux/cloudkit_record_database.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "platform/linux/cloud_sign_in.h"
#include "platform/linux/cloud_test.h"

namespace brimwatch {
namespace {

using test::recordNamed;
using test::RecordServer;

constexpr SavePolicy unchanged = SavePolicy::ifServerRecordUnchanged;

std::string bytesOfEveryKind() {
    std::string bytes;
    for (int value = 0; value < 256; ++value)
        bytes += static_cast<char>(value);
    return bytes;
}

TEST(CloudTimingTest, IsTenSecondsWithoutAByteTwentyInAllAndFiveMinutesForASignIn) {
    EXPECT_EQ(CloudTiming().silence, std::chrono::seconds(10));
    EXPECT_EQ(CloudTiming().whole, std::chrono::seconds(20));
    EXPECT_EQ(CloudSignIn::Surroundings().giveUpAfter, std::chrono::minutes(5));
}

class CloudKitRecordDatabaseTest : public test::CloudTest {
  protected:
    void SetUp() override {
        CloudTest::SetUp();
        signIn("me");
    }
    std::vector<std::string> operations() const {
        std::vector<std::string> names;
        for (const RecordServer::Request& request : server_->requests())
            names.push_back(request.operation);
        return names;
    }
    RecordServer::Json lastOperation() const {
        return server_->requests().back().json()["operations"][0];
    }
    CloudRecord saved(const CloudRecord& record, SavePolicy policy = unchanged) {
        const RecordDatabase::SavedRecord result = save(record, policy);
        EXPECT_TRUE(result && *result);
        return result && *result ? **result : CloudRecord();
    }
    CloudError refused(const CloudRecord& record, SavePolicy policy = unchanged) {
        const RecordDatabase::SavedRecord result = save(record, policy);
        EXPECT_TRUE(result && !*result);
        return result && !*result ? result->error() : CloudError{.code = -1};
    }
};

TEST_F(CloudKitRecordDatabaseTest, WhoNeverSignedInHasNoAccountAndIsNotAskedFor) {
    keys_.values.clear();
    EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::noAccount);
    EXPECT_TRUE(server_->requests().empty());
}

TEST_F(CloudKitRecordDatabaseTest, TheCallerIsRecognisedInEitherForm) {
    for (const auto form : {RecordServer::CallerForm::list, RecordServer::CallerForm::flat}) {
        server_->set(form);
        EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::available);
    }
    EXPECT_EQ(server_->requests().back().method, "GET");
    EXPECT_EQ(operations(), (std::vector<std::string>{"users/caller", "users/caller"}));
}

TEST_F(CloudKitRecordDatabaseTest, AnAnswerThatNamesNobodyIsAnError) {
    for (const char* body :
         {"{}", "{\"users\":[]}", "{\"users\":[{}]}", "{\"userRecordName\":\"\"}",
          "{\"users\":{\"userRecordName\":\"_a\"}}", "{\"userRecordName\":7}"}) {
        server_->answerNext({.body = body});
        EXPECT_EQ(codeOf(wait(database_->accountStatus())), 1) << body;
    }
}

TEST_F(CloudKitRecordDatabaseTest, ATokenThatIsNotKnownMeansNoAccount) {
    for (const auto reading :
         {RecordServer::UnknownToken::required, RecordServer::UnknownToken::failed}) {
        server_->set(reading);
        server_->expireTokens();
        EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::noAccount);
    }
    EXPECT_EQ(server_->requests().size(), 2);
}

TEST_F(CloudKitRecordDatabaseTest, ARefusedTokenIsForgottenALapsedOneIsNot) {
    server_->expireTokens();
    server_->set(RecordServer::UnknownToken::required);
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 9);
    EXPECT_FALSE(storedToken().empty());
    server_->set(RecordServer::UnknownToken::failed);
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 9);
    EXPECT_TRUE(storedToken().empty());
    // From here on it asks without a user.
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 11);
    EXPECT_EQ(server_->requests().back().userToken(), "");
}

TEST_F(CloudKitRecordDatabaseTest, ABuildThatTheServerDoesNotKnowIsToldApart) {
    server_->answerNext(RecordServer::error(400, "BAD_REQUEST"));
    EXPECT_EQ(codeOf(wait(database_->accountStatus())), 5);
    server_->answerNext(RecordServer::error(400, "BAD_REQUEST"));
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 12);
    keys_.values.clear();
    token_.emplace(keys_, container());
    server_->answerNext(RecordServer::error(401, "AUTHENTICATION_FAILED"));
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 8);
}

TEST_F(CloudKitRecordDatabaseTest, AKeyStoreThatCannotBeReadIsAnErrorNotAMissingAccount) {
    keys_.answer = [](const std::string&) { return key_status::interactionNotAllowed; };
    const auto status = wait(database_->accountStatus());
    ASSERT_FALSE(status);
    EXPECT_EQ(status.error().code, 1);
    EXPECT_NE(status.error().description.find("-25308"), std::string::npos);
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 1);
    EXPECT_TRUE(server_->requests().empty());
    keys_.answer = nullptr;
    EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::available);
}

TEST_F(CloudKitRecordDatabaseTest, ARecordIsReadWithItsTagAndBytes) {
    server_->put("ls-1", "LimitSnapshot", bytesOfEveryKind(), "another");
    const auto record = wait(database_->record("ls-1"));
    ASSERT_TRUE(record);
    EXPECT_EQ(record->recordType, "LimitSnapshot");
    EXPECT_EQ(record->recordName, "ls-1");
    EXPECT_EQ(record->recordChangeTag, server_->records().at("ls-1").tag);
    EXPECT_EQ(record->payload, bytesOfEveryKind());
}

TEST_F(CloudKitRecordDatabaseTest, ARecordCanBeReadByNobodyInParticular) {
    keys_.values.clear();
    server_->put("ls-1", "LimitSnapshot", "abc", "another");
    EXPECT_EQ(wait(database_->record("ls-1"))->payload, "abc");
}

TEST_F(CloudKitRecordDatabaseTest, AMissingRecordIsUnknownWhereverTheErrorStands) {
    for (const auto errors :
         {RecordServer::RecordErrors::inRecords, RecordServer::RecordErrors::inRecordsWithStatus,
          RecordServer::RecordErrors::atTopLevel}) {
        server_->set(errors);
        EXPECT_EQ(codeOf(wait(database_->record("ls-1"))), 11);
    }
}

TEST_F(CloudKitRecordDatabaseTest, ADeletedRecordIsUnknown) {
    server_->answerNext({.body = R"({"records":[{"recordName":"a","deleted":true}]})"});
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 11);
}

TEST_F(CloudKitRecordDatabaseTest, OnlyTheEntryOfTheRecordCounts) {
    server_->answerNext({.body = R"({"records":[
        7, {"recordName":"b","serverErrorCode":"ACCESS_DENIED"}, {"recordType":"T"},
        {"recordName":"a","recordType":"T","recordChangeTag":"x","fields":{}}]})"});
    EXPECT_EQ(wait(database_->record("a"))->recordChangeTag, "x");
    for (const char* body : {R"({"records":[]})", R"({"records":[{"recordName":"b"}]})",
                             R"({"records":{"recordName":"a"}})", "{}"}) {
        server_->answerNext({.body = body});
        EXPECT_EQ(codeOf(wait(database_->record("a"))), 1) << body;
    }
}

TEST_F(CloudKitRecordDatabaseTest, AnErrorWithoutANameStandsForTheRecord) {
    server_->answerNext({.body = R"({"records":[{"serverErrorCode":"NOT_FOUND"}]})"});
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 11);
}

TEST_F(CloudKitRecordDatabaseTest, APayloadThatIsNotBytesIsAbsent) {
    const std::vector<std::pair<const char*, std::optional<std::string>>> fields = {
        {R"({"type":"BYTES","value":"YWJj"})", "abc"},
        {R"({"value":"YWJj"})", "abc"},
        {R"({"type":"BYTES","value":""})", ""},
        {R"({"type":"STRING","value":"YWJj"})", std::nullopt},
        {R"({"type":7,"value":"YWJj"})", std::nullopt},
        {R"({"type":"BYTES","value":"YWJ*"})", std::nullopt},
        {R"({"type":"BYTES","value":7})", std::nullopt},
        {R"({"type":"BYTES"})", std::nullopt},
        {R"("YWJj")", std::nullopt},
        {"null", std::nullopt},
    };
    for (const auto& [field, payload] : fields) {
        server_->answerNext({.body = std::string(R"({"records":[{"recordName":"a",)") +
                                     R"("recordChangeTag":"x","fields":{"payload":)" + field +
                                     "}}]}"});
        const auto record = wait(database_->record("a"));
        ASSERT_TRUE(record) << field;
        EXPECT_EQ(record->payload, payload) << field;
    }
}

TEST_F(CloudKitRecordDatabaseTest, ANewRecordIsCreated) {
    const CloudRecord record = saved(recordNamed("ls-1", bytesOfEveryKind()));
    EXPECT_EQ(record.recordChangeTag, server_->records().at("ls-1").tag);
    EXPECT_EQ(record.payload, bytesOfEveryKind());
    EXPECT_EQ(server_->payload("ls-1"), bytesOfEveryKind());
    EXPECT_EQ(server_->records().at("ls-1").type, "LimitSnapshot");
    EXPECT_EQ(lastOperation()["operationType"], "create");
    EXPECT_EQ(lastOperation()["record"]["fields"]["payload"]["type"], "BYTES");
    EXPECT_FALSE(server_->requests().back().json().contains("zoneID"));
    EXPECT_EQ(server_->requests().back().headers.at("content-type"), "application/json");
}

TEST_F(CloudKitRecordDatabaseTest, AKnownRecordIsUpdatedUnderItsTag) {
    CloudRecord record = saved(recordNamed("ls-1", "one"));
    const std::string firstTag = *record.recordChangeTag;
    record.payload = "two";
    record = saved(record);
    EXPECT_EQ(server_->payload("ls-1"), "two");
    EXPECT_NE(record.recordChangeTag, firstTag);
    EXPECT_EQ(lastOperation()["operationType"], "update");
    EXPECT_EQ(lastOperation()["record"]["recordChangeTag"], firstTag);
}

TEST_F(CloudKitRecordDatabaseTest, TheLargestPayloadGoesThere) {
    const std::string payload(900'000, '\xFF');
    EXPECT_EQ(saved(recordNamed("ls-1", payload)).payload, payload);
    EXPECT_EQ(wait(database_->record("ls-1"))->payload, payload);
}

TEST_F(CloudKitRecordDatabaseTest, AConflictTellsTheRecordOfTheServer) {
    for (const auto errors :
         {RecordServer::RecordErrors::inRecords, RecordServer::RecordErrors::inRecordsWithStatus,
          RecordServer::RecordErrors::atTopLevel}) {
        server_->set(errors);
        server_->put("ls-1", "LimitSnapshot", "theirs", "me");
        CloudRecord mine = recordNamed("ls-1", "mine");
        for (const auto& tag : {std::optional<std::string>(), std::optional<std::string>("old")}) {
            mine.recordChangeTag = tag;
            const CloudError error = refused(mine);
            EXPECT_EQ(error.code, 14);
            ASSERT_TRUE(error.serverRecord);
            EXPECT_EQ(error.serverRecord->payload, "theirs");
            EXPECT_EQ(error.serverRecord->recordChangeTag, server_->records().at("ls-1").tag);
        }
    }
    EXPECT_EQ(server_->payload("ls-1"), "theirs");
}

TEST_F(CloudKitRecordDatabaseTest, AConflictWithARecordThatVanishesTellsNone) {
    server_->put("ls-1", "LimitSnapshot", "theirs", "me");
    server_->beforeEach([this](const RecordServer::Request& request) {
        if (request.operation == "records/lookup") server_->records().clear();
    });
    const CloudError error = refused(recordNamed("ls-1", "mine"));
    EXPECT_EQ(error.code, 14);
    EXPECT_FALSE(error.serverRecord);
}

TEST_F(CloudKitRecordDatabaseTest, WhereTheQuestionAfterAConflictFailsItsErrorIsTold) {
    server_->answerNext(RecordServer::error(409, "CONFLICT"));
    server_->answerNext(RecordServer::error(429, "THROTTLED", "slow down", 17.5));
    const CloudError error = refused(recordNamed("ls-1", "mine"));
    EXPECT_EQ(error.code, 7);
    EXPECT_EQ(error.retryAfterSeconds, 17.5);
}

TEST_F(CloudKitRecordDatabaseTest, ARecordThatIsGoneIsUnknownToAnUpdate) {
    CloudRecord record = recordNamed("ls-1", "mine");
    record.recordChangeTag = "t1";
    EXPECT_EQ(refused(record).code, 11);
    EXPECT_EQ(operations(), std::vector<std::string>{"records/modify"});
}

TEST_F(CloudKitRecordDatabaseTest, WithAllKeysTheRecordOfTheServerIsOverwritten) {
    server_->put("ls-1", "LimitSnapshot", "theirs", "me");
    server_->records().at("ls-1").fields["other"] = {{"value", 7}};
    CloudRecord mine = recordNamed("ls-1", "mine");
    mine.recordChangeTag = "old";
    saved(mine, SavePolicy::allKeys);
    EXPECT_EQ(server_->payload("ls-1"), "mine");
    EXPECT_TRUE(server_->records().at("ls-1").fields.contains("other"));
    EXPECT_EQ(lastOperation()["operationType"], "forceUpdate");
    EXPECT_FALSE(lastOperation()["record"].contains("recordChangeTag"));
    saved(recordNamed("ls-2", "new"), SavePolicy::allKeys);
    EXPECT_EQ(server_->payload("ls-2"), "new");
}

TEST_F(CloudKitRecordDatabaseTest, ARecordOfAnotherUserIsDenied) {
    server_->put("ls-1", "LimitSnapshot", "theirs", "another");
    EXPECT_EQ(refused(recordNamed("ls-1", "mine"), SavePolicy::allKeys).code, 10);
    EXPECT_EQ(codeOf(wait(database_->deleteRecord("ls-1"))), 10);
    EXPECT_EQ(server_->payload("ls-1"), "theirs");
}

TEST_F(CloudKitRecordDatabaseTest, AnAnswerThatDoesNotTellOfTheRecordSaysNothing) {
    for (const char* body :
         {R"({"records":[]})", R"({"records":[{"recordName":"b","recordChangeTag":"x"}]})",
          R"({"records":[{"recordName":"ls-1"}]})", "{}"}) {
        server_->answerNext({.body = body});
        EXPECT_EQ(save(recordNamed("ls-1", "mine"), unchanged), std::nullopt) << body;
    }
}

TEST_F(CloudKitRecordDatabaseTest, AnAnswerWithoutFieldsLeavesWhatWasSent) {
    server_->answerNext({.body = R"({"records":[{"recordName":"ls-1","recordChangeTag":"x"}]})"});
    CloudRecord expected = recordNamed("ls-1", "mine");
    expected.recordChangeTag = "x";
    EXPECT_EQ(saved(recordNamed("ls-1", "mine")), expected);
}

TEST_F(CloudKitRecordDatabaseTest, WhatTheAnswerTellsOfThePayloadHolds) {
    for (const auto& [field, payload] :
         std::vector<std::pair<const char*, std::optional<std::string>>>{
             {R"({"value":"YWJj"})", "abc"}, {R"({"type":"STRING","value":"x"})", std::nullopt}}) {
        server_->answerNext({.body = std::string(R"({"records":[{"recordName":"ls-1",)") +
                                     R"("recordChangeTag":"x","fields":{"payload":)" + field +
                                     "}}]}"});
        EXPECT_EQ(saved(recordNamed("ls-1", "mine")).payload, payload);
    }
}

TEST_F(CloudKitRecordDatabaseTest, ACallThatFailsAsAWholeIsAnErrorOfTheCall) {
    server_->answerNext(RecordServer::error(503, "TRY_AGAIN_LATER", "busy", 30));
    const auto result = wait(database_->save(recordNamed("ls-1", "mine"), unchanged));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, 6);
    EXPECT_EQ(result.error().retryAfterSeconds, 30);
    EXPECT_EQ(result.error().description, "TRY_AGAIN_LATER: busy");
}

TEST_F(CloudKitRecordDatabaseTest, ARecordIsDeleted) {
    server_->put("ls-1", "LimitSnapshot", "mine", "me");
    EXPECT_TRUE(wait(database_->deleteRecord("ls-1")));
    EXPECT_TRUE(server_->records().empty());
    EXPECT_EQ(lastOperation()["operationType"], "forceDelete");
}

TEST_F(CloudKitRecordDatabaseTest, AMissingRecordIsDeletedOrUnknown) {
    EXPECT_TRUE(wait(database_->deleteRecord("ls-1")));
    server_->set(RecordServer::MissingDelete::isNotFound);
    EXPECT_EQ(codeOf(wait(database_->deleteRecord("ls-1"))), 11);
}

TEST_F(CloudKitRecordDatabaseTest, ADeletionThatTheAnswerDoesNotConfirmIsAnError) {
    server_->answerNext({.body = R"({"records":[]})"});
    EXPECT_EQ(codeOf(wait(database_->deleteRecord("ls-1"))), 1);
}

TEST_F(CloudKitRecordDatabaseTest, TheAddressHoldsContainerEnvironmentAndBothTokens) {
    const std::string token = storedToken();
    wait(database_->record("a"));
    const RecordServer::Request& request = server_->requests().back();
    EXPECT_TRUE(request.target.starts_with(
        "/database/1/iCloud.net.example.test/development/public/records/lookup?"));
    EXPECT_EQ(request.query.at("ckAPIToken"), RecordServer::apiToken);
    EXPECT_EQ(request.userToken(), token);
    for (const char raw : {'+', '/', '='})
        EXPECT_EQ(request.target.substr(request.target.find("ckWebAuthToken=") + 15).find(raw),
                  std::string::npos);
}

TEST_F(CloudKitRecordDatabaseTest, EachAnswerBringsTheTokenForTheNextQuestion) {
    for (int count = 0; count < 5; ++count) {
        EXPECT_TRUE(wait(database_->accountStatus()));
        EXPECT_EQ(storedToken(), server_->tokenOf("me"));
    }
}

TEST_F(CloudKitRecordDatabaseTest, AnErrorBringsItToo) {
    server_->set(RecordServer::RecordErrors::atTopLevel);
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 11);
    EXPECT_EQ(storedToken(), server_->tokenOf("me"));
    const std::string next = server_->signIn("me");
    RecordServer::Reply failure = RecordServer::page(500);
    failure.headers.emplace_back("X-Apple-CloudKit-Web-Auth-Token", next);
    server_->answerNext(failure);
    EXPECT_EQ(codeOf(wait(database_->record("a"))), 6);
    EXPECT_EQ(storedToken(), next);
}

TEST_F(CloudKitRecordDatabaseTest, WithoutASuccessorTheOldTokenGoesOn) {
    server_->set(RecordServer::Rotation::none);
    const std::string token = storedToken();
    EXPECT_TRUE(wait(database_->accountStatus()));
    EXPECT_TRUE(wait(database_->accountStatus()));
    EXPECT_EQ(storedToken(), token);
}

TEST_F(CloudKitRecordDatabaseTest, ASuccessorThatIsNoTokenIsPassedOver) {
    server_->set(RecordServer::Rotation::none);
    const std::string token = storedToken();
    for (const std::string& bad :
         {std::string(), std::string("two words"), std::string(8193, 'a')}) {
        server_->afterNext([&](RecordServer::Reply& reply) {
            reply.headers.emplace_back("X-Apple-CloudKit-Web-Auth-Token", bad);
        });
        EXPECT_TRUE(wait(database_->accountStatus()));
        EXPECT_EQ(storedToken(), token);
    }
}

TEST_F(CloudKitRecordDatabaseTest, QuestionsGoOneAfterTheOther) {
    server_->setLatency(std::chrono::milliseconds(5));
    using Save = test::Pending<CloudResult<RecordDatabase::SavedRecord>>;
    std::vector<Save> saves;
    for (int number = 0; number < 20; ++number)
        saves.emplace_back(
            database_->save(recordNamed("ls-" + std::to_string(number), "x"), unchanged));
    EXPECT_TRUE(eventually([&] { return saves.back().isDone(); }));
    for (const Save& each : saves)
        EXPECT_TRUE(each.isDone() && each.result() && **each.result());
    EXPECT_EQ(server_->mostAtOnce(), 1);
    EXPECT_EQ(server_->records().size(), 20);
    EXPECT_EQ(storedToken(), server_->tokenOf("me"));
    for (int number = 0; number < 20; ++number) {
        const auto body = server_->requests().at(static_cast<std::size_t>(number)).json();
        EXPECT_EQ(body["operations"][0]["record"]["recordName"], "ls-" + std::to_string(number));
    }
}

}  // namespace
}  // namespace brimwatch
