// What goes wrong on the way to the cloud and there.

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QThread>
#include <algorithm>
#include <vector>

#include "platform/linux/cloud_test.h"

namespace brimwatch {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::Pending;
using test::recordNamed;
using test::RecordServer;
using Delivery = RecordServer::Delivery;
using PendingRecord = Pending<CloudResult<CloudRecord>>;

// Limits that a test can wait for, of which the one that is not meant is never reached.
constexpr CloudTiming impatient{.silence = milliseconds(60), .whole = seconds(60)};
constexpr CloudTiming shortWhole{.silence = seconds(60), .whole = milliseconds(150)};

class CloudKitHostileTest : public test::CloudTest {
  protected:
    void SetUp() override {
        CloudTest::SetUp();
        signIn("me");
        server_->put("a", "LimitSnapshot", "payload", "me");
    }
    CloudError failure() {
        const auto record = wait(database_->record("a"));
        EXPECT_FALSE(record);
        return record ? CloudError{.code = -1} : record.error();
    }
    int failureOf(const RecordServer::Reply& reply) {
        server_->answerNext(reply);
        return failure().code;
    }
    bool works() { return wait(database_->record("a")).has_value(); }
};

TEST_F(CloudKitHostileTest, AServerThatSaysNothingIsLeftAfterASilence) {
    makeDatabase(impatient);
    EXPECT_EQ(failureOf({.delivery = Delivery::never}), 4);
    EXPECT_EQ(failureOf({.body = "{}", .delivery = Delivery::head}), 4);
    EXPECT_TRUE(works());
}

TEST_F(CloudKitHostileTest, AServerThatTakesTooLongIsLeftAtTheDeadline) {
    makeDatabase(shortWhole);
    EXPECT_EQ(failureOf({.delivery = Delivery::never}), 4);
    EXPECT_TRUE(works());
}

TEST_F(CloudKitHostileTest, BytesThatKeepComingDoNotPutOffTheDeadline) {
    makeDatabase({.silence = milliseconds(500), .whole = milliseconds(1500)});
    QTcpServer drip;
    ASSERT_TRUE(drip.listen(QHostAddress(QHostAddress::LocalHost)));
    QTimer next;
    QObject::connect(&drip, &QTcpServer::newConnection, &next, [&] {
        QTcpSocket* const visitor = drip.nextPendingConnection();
        visitor->write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        QObject::connect(&next, &QTimer::timeout, visitor, [visitor] { visitor->write(" "); });
        next.start(milliseconds(20));
    });
    CloudContainer slow = container();
    slow.address = "http://127.0.0.1:" + std::to_string(drip.serverPort());
    CloudKitRecordDatabase database(slow, *token_,
                                    {.silence = milliseconds(500), .whole = milliseconds(1500)});
    EXPECT_EQ(codeOf(wait(database.record("a"))), 4);
}

TEST_F(CloudKitHostileTest, BytesThatKeepComingAreNoSilence) {
    QTcpServer drip;
    ASSERT_TRUE(drip.listen(QHostAddress(QHostAddress::LocalHost)));
    std::string left = R"({"records":[{"recordName":"a","recordType":"T"}]})";
    QTimer next;
    QObject::connect(&drip, &QTcpServer::newConnection, &next, [&] {
        QTcpSocket* const visitor = drip.nextPendingConnection();
        visitor->write("HTTP/1.1 200 OK\r\nContent-Length: " +
                       QByteArray::number(static_cast<int>(left.size())) + "\r\n\r\n");
        QObject::connect(&next, &QTimer::timeout, visitor, [&left, visitor] {
            visitor->write(QByteArray::fromStdString(left.substr(0, 6)));
            left.erase(0, 6);
        });
        next.start(milliseconds(200));
    });
    CloudContainer slow = container();
    slow.address = "http://127.0.0.1:" + std::to_string(drip.serverPort());
    CloudKitRecordDatabase database(slow, *token_,
                                    {.silence = milliseconds(1200), .whole = seconds(60)});
    EXPECT_TRUE(wait(database.record("a")));
}

TEST_F(CloudKitHostileTest, TheWaitForATurnCountsForTheDeadline) {
    makeDatabase(shortWhole);
    server_->answerNext({.delivery = Delivery::never});
    const PendingRecord first(database_->record("a"));
    const PendingRecord second(database_->record("a"));
    EXPECT_TRUE(eventually([&] { return first.isDone() && second.isDone(); }));
    EXPECT_EQ(codeOf(first.result()), 4);
    EXPECT_EQ(codeOf(second.result()), 4);
}

TEST_F(CloudKitHostileTest, AQuestionThatGivesUpItsTurnLetsTheOthersPass) {
    makeDatabase(impatient);
    server_->answerNext({.delivery = Delivery::never});
    const PendingRecord first(database_->record("a"));
    const PendingRecord second(database_->record("a"));
    EXPECT_TRUE(eventually([&] { return second.isDone(); }));
    EXPECT_EQ(codeOf(first.result()), 4);
    EXPECT_TRUE(second.result());
}

TEST_F(CloudKitHostileTest, ABrokenConnectionIsAFailureOfTheNetwork) {
    // Qt itself asks again over a new connection, some times.
    for (int count = 0; count < 10; ++count)
        server_->answerNext({.delivery = Delivery::broken});
    EXPECT_EQ(failure().code, 4);
}

TEST_F(CloudKitHostileTest, ATruncatedAnswerIsAFailureOfTheNetwork) {
    server_->afterNext([](RecordServer::Reply& reply) { reply.delivery = Delivery::half; });
    EXPECT_EQ(failure().code, 4);
    EXPECT_TRUE(works());
}

TEST_F(CloudKitHostileTest, NobodyAtTheAddressIsAFailureOfTheNetwork) {
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress(QHostAddress::LocalHost)));
    CloudContainer nowhere = container();
    nowhere.address = "http://127.0.0.1:" + std::to_string(closed.serverPort());
    closed.close();
    CloudKitRecordDatabase database(nowhere, *token_);
    EXPECT_EQ(codeOf(wait(database.record("a"))), 4);
}

TEST_F(CloudKitHostileTest, ANameThatCannotBeResolvedMeansNoNetwork) {
    CloudContainer nowhere = container();
    nowhere.address = "http://name.invalid";
    CloudKitRecordDatabase database(nowhere, *token_);
    EXPECT_EQ(codeOf(wait(database.record("a"))), 3);
    // The threads that resolve names keep descriptors for a while.
    server_.reset();
    application_.reset();
}

TEST_F(CloudKitHostileTest, AServerWithoutTlsIsNotSpokenTo) {
    CloudContainer plain = container();
    plain.address.replace(0, 4, "https");
    CloudKitRecordDatabase database(plain, *token_, impatient);
    EXPECT_EQ(codeOf(wait(database.record("a"))), 4);
    EXPECT_TRUE(server_->requests().empty());
}

TEST_F(CloudKitHostileTest, AnAnswerOfMoreThanEightMebibytesIsNone) {
    const std::string entry = R"({"records":[{"recordName":"a","recordType":"T"}]})";
    const auto limit = static_cast<std::size_t>(CloudConnection::answerBytesLimit);
    const std::string largest = entry + std::string(limit - entry.size(), ' ');
    server_->answerNext({.body = largest});
    EXPECT_TRUE(works());
    EXPECT_EQ(failureOf({.body = largest + ' '}), 4);
    EXPECT_EQ(failureOf({.body = std::string(4 * limit, ' ')}), 4);
    EXPECT_TRUE(works());
}

TEST_F(CloudKitHostileTest, ThePageOfAGuestNetworkIsNoAnswer) {
    EXPECT_EQ(failureOf(RecordServer::page(200)), 4);
    EXPECT_EQ(failureOf(RecordServer::page(407)), 4);
    EXPECT_EQ(failureOf(RecordServer::page(404)), 15);
    EXPECT_EQ(failureOf(RecordServer::page(429)), 7);
    EXPECT_EQ(failureOf(RecordServer::page(502)), 6);
}

TEST_F(CloudKitHostileTest, TheTypeOfTheContentDoesNotCount) {
    server_->afterNext([](RecordServer::Reply& reply) {
        reply.headers = {{"Content-Type", "text/html"}};
    });
    EXPECT_TRUE(works());
    RecordServer::Reply page = RecordServer::page(200);
    page.headers = {{"Content-Type", "application/json"}};
    EXPECT_EQ(failureOf(page), 4);
}

TEST_F(CloudKitHostileTest, JsonThatIsNoObjectIsNoAnswer) {
    for (const char* body : {"", "[]", "7", "null", "{\"records\":[", "{} {}"})
        EXPECT_EQ(failureOf({.body = body}), 4) << body;
    EXPECT_EQ(failureOf({.status = 500, .body = "{}"}), 6);
    EXPECT_EQ(failureOf({.status = 404, .body = "{}"}), 15);
    EXPECT_EQ(failureOf({.body = std::string(100'000, '[')}), 4);
}

TEST_F(CloudKitHostileTest, NoRedirectIsFollowed) {
    for (const int status : {301, 302, 303, 307, 308}) {
        RecordServer::Reply away{.status = status, .body = "{\"records\":[]}"};
        away.headers.emplace_back("Location", server_->address() + "/elsewhere");
        EXPECT_EQ(failureOf(away), 4) << status;
    }
    EXPECT_EQ(server_->requests().size(), 5);
}

TEST_F(CloudKitHostileTest, NoCookieIsKept) {
    server_->afterNext([](RecordServer::Reply& reply) {
        reply.headers.emplace_back("Set-Cookie", "a=b; Path=/");
    });
    EXPECT_TRUE(works());
    EXPECT_TRUE(works());
    EXPECT_FALSE(server_->requests().back().headers.contains("cookie"));
}

TEST_F(CloudKitHostileTest, AdviceToWaitIsTakenFromBodyOrHeader) {
    const auto advice = [this](const RecordServer::Reply& reply) {
        server_->answerNext(reply);
        return failure().retryAfterSeconds;
    };
    EXPECT_EQ(advice(RecordServer::error(429, "THROTTLED", "", 2.5)), 2.5);
    EXPECT_EQ(advice(RecordServer::error(429, "THROTTLED")), std::nullopt);
    RecordServer::Reply unavailable = RecordServer::error(503, "TRY_AGAIN_LATER");
    unavailable.headers = {{"Retry-After", " 120"}};
    EXPECT_EQ(advice(unavailable), 120);
    RecordServer::Reply both = RecordServer::error(503, "TRY_AGAIN_LATER", "", 3);
    both.headers = {{"Retry-After", "120"}};
    EXPECT_EQ(advice(both), 3);
    RecordServer::Reply page = RecordServer::page(503);
    page.headers = {{"Retry-After", "60"}};
    EXPECT_EQ(advice(page), 60);
    for (const char* useless : {"Fri, 31 Dec 2099 23:59:59 GMT", "-5", "", "1e9", "99999999999"}) {
        page.headers = {{"Retry-After", useless}};
        EXPECT_EQ(advice(page), std::nullopt) << useless;
    }
    for (const char* useless : {"-1", "1e999", "\"7\"", "null", "true"}) {
        EXPECT_EQ(advice({.status = 429,
                          .body = std::string(R"({"serverErrorCode":"THROTTLED","retryAfter":)") +
                                  useless + "}"}),
                  std::nullopt)
            << useless;
    }
}

TEST_F(CloudKitHostileTest, WhatAServerSaysIsShownInOneShortLine) {
    server_->answerNext(
        {.status = 400,
         .body = R"({"serverErrorCode":"BAD_REQUEST","reason":"a\nb\u001b[1m\u202e)" +
                 std::string(1000, 'x') + "\"}"});
    const std::string description = failure().description;
    EXPECT_TRUE(description.starts_with("BAD_REQUEST: a b [1m x")) << description;
    EXPECT_EQ(description.size(), 300);
}

TEST_F(CloudKitHostileTest, AServerThatRepeatsTheTokenIsNotQuoted) {
    const std::string token = storedToken();
    server_->answerNext(RecordServer::error(400, "BAD_REQUEST", "no: " + token));
    EXPECT_EQ(failure().description.find(token), std::string::npos);
    server_->answerNext(
        {.body =
             RecordServer::Json{
                 {"records",
                  {{{"recordName", "a"}, {"serverErrorCode", "CONFLICT"}, {"reason", token}}}}}
                 .dump()});
    EXPECT_EQ(failure().description.find(token), std::string::npos);
    EXPECT_EQ(failureOf(RecordServer::page(500)), 6);
}

TEST_F(CloudKitHostileTest, NoFailureTellsTheAddress) {
    server_->set(RecordServer::Rotation::none);
    for (const RecordServer::Reply& reply :
         {RecordServer::page(200), RecordServer::page(404), RecordServer::page(500),
          RecordServer::Reply{.body = "{}", .delivery = Delivery::half}}) {
        server_->answerNext(reply);
        const std::string description = failure().description;
        EXPECT_FALSE(description.empty());
        for (const char* part : {"tok", "http", "ckWebAuthToken", "api+token", "127.0.0.1"})
            EXPECT_EQ(description.find(part), std::string::npos) << description;
    }
}

TEST_F(CloudKitHostileTest, TheIdForTheProvidersSupportIsLoggedIfItIsOne) {
    EXPECT_EQ(failureOf(RecordServer::error(500, "INTERNAL_ERROR")), 1);
    EXPECT_TRUE(log().contains("00000000-aaaa-bbbb-cccc-0123456789ab"));
    const qsizetype before = log().size();
    server_->answerNext(
        {.status = 500, .body = R"({"serverErrorCode":"INTERNAL_ERROR","uuid":"a\nforged line"})"});
    EXPECT_EQ(failure().code, 1);
    EXPECT_EQ(log().size(), before);
}

TEST_F(CloudKitHostileTest, ASaveWhoseAnswerIsLostIsFoundAsAConflict) {
    server_->set(RecordServer::Rotation::oldOneStays);
    server_->afterNext([](RecordServer::Reply& reply) { reply.delivery = Delivery::half; });
    EXPECT_EQ(codeOf(wait(
                  database_->save(recordNamed("b", "mine"), SavePolicy::ifServerRecordUnchanged))),
              4);
    const auto again = save(recordNamed("b", "mine"), SavePolicy::ifServerRecordUnchanged);
    ASSERT_TRUE(again && !*again);
    EXPECT_EQ(again->error().serverRecord->payload, "mine");
}

// Adds a letter to the record, at first as if there were none yet, then on top of whatever the
// server has, and tells how many conflicts that cost, or -1.
QCoro::Task<int> append(RecordDatabase& database, char letter) {
    CloudRecord record = recordNamed("shared", std::string(1, letter));
    for (int conflicts = 0;; ++conflicts) {
        const auto saved = co_await database.save(record, SavePolicy::ifServerRecordUnchanged);
        if (!saved || !*saved) co_return -1;
        if (**saved) co_return conflicts;
        const CloudError& error = (**saved).error();
        if (!error.serverRecord) co_return -1;
        record = *error.serverRecord;
        record.payload = record.payload.value_or("") + letter;
    }
}

QCoro::Task<int> append(RecordDatabase& database, char letter, int count) {
    int conflicts = 0;
    for (; count > 0; --count) {
        const int more = co_await append(database, letter);
        if (more < 0) co_return -1;
        conflicts += more;
    }
    co_return conflicts;
}

TEST_F(CloudKitHostileTest, AThousandSavesOfTwoMachinesLoseNothing) {
    test::ScriptedKeyStore otherKeys;
    otherKeys.values[tokenItem] = SecretBytes(server_->signIn("me"));
    CloudUserToken otherToken(otherKeys, container());
    CloudKitRecordDatabase other(container(), otherToken);
    QCoro::Task<int> mine = append(*database_, 'm', 500);
    QCoro::Task<int> theirs = append(other, 't', 500);
    const int conflicts = QCoro::waitFor(std::move(mine));
    const int otherConflicts = QCoro::waitFor(std::move(theirs));
    EXPECT_GE(conflicts, 499);
    EXPECT_GE(otherConflicts, 499);
    EXPECT_GE(conflicts + otherConflicts, 999);
    const std::string text = server_->payload("shared").value();
    EXPECT_EQ(std::count(text.begin(), text.end(), 'm'), 500);
    EXPECT_EQ(std::count(text.begin(), text.end(), 't'), 500);
}

TEST_F(CloudKitHostileTest, ATokenThatCannotBeStoredIsUsedAndStoredLater) {
    keys_.answer = [](const std::string& call) -> std::optional<KeyStatus> {
        if (call == "update") return key_status::interactionNotAllowed;
        return std::nullopt;
    };
    EXPECT_TRUE(works());
    EXPECT_TRUE(works());
    EXPECT_NE(storedToken(), server_->tokenOf("me"));
    keys_.answer = nullptr;
    server_->set(RecordServer::Rotation::none);
    EXPECT_TRUE(works());
    EXPECT_EQ(storedToken(), server_->tokenOf("me"));
    EXPECT_TRUE(log().contains("-25308"));
}

TEST_F(CloudKitHostileTest, ASuccessorIsStoredBeforeTheNextQuestion) {
    std::vector<std::string> atQuestions;
    server_->beforeEach([&](const RecordServer::Request& request) {
        EXPECT_EQ(request.userToken(), storedToken());
        atQuestions.push_back(storedToken());
    });
    const PendingRecord first(database_->record("a"));
    const PendingRecord second(database_->record("a"));
    EXPECT_TRUE(eventually([&] { return second.isDone(); }));
    ASSERT_EQ(atQuestions.size(), 2);
    EXPECT_NE(atQuestions.front(), atQuestions.back());
}

TEST_F(CloudKitHostileTest, ASignInMeanwhileIsNotUndoneByALateAnswer) {
    const std::string other = server_->signIn("another");
    server_->beforeEach([&](const RecordServer::Request&) {
        token_->set(SecretBytes(other), KeyPrompt::forbidden);
    });
    EXPECT_TRUE(works());
    EXPECT_EQ(storedToken(), other);
    server_->beforeEach([&](const RecordServer::Request&) {
        token_->set(SecretBytes(server_->signIn("me")), KeyPrompt::forbidden);
    });
    server_->expireTokens();
    EXPECT_EQ(failure().code, 9);
    EXPECT_EQ(storedToken(), server_->tokenOf("me"));
}

TEST_F(CloudKitHostileTest, ASignOutMeanwhileIsNotUndoneByALateAnswer) {
    server_->beforeEach(
        [&](const RecordServer::Request&) { token_->forget(KeyPrompt::forbidden); });
    EXPECT_TRUE(works());
    EXPECT_EQ(storedToken(), "");
}

TEST_F(CloudKitHostileTest, AServerThatRepeatsTheAddressIsNotQuoted) {
    server_->set(RecordServer::Rotation::none);
    const QByteArray token = QByteArray::fromStdString(storedToken());
    const QByteArray encoded = token.toPercentEncoding();
    const std::vector<QByteArray> forms = {token, encoded, encoded.toLower(),
                                           QByteArray(token).replace('+', "%2B"),
                                           QByteArray(token).replace('+', ' ')};
    for (const QByteArray& form : forms) {
        server_->answerNext(
            RecordServer::error(400, "BAD_REQUEST", "no: ?ckWebAuthToken=" + form.toStdString()));
        EXPECT_EQ(failure().description, "(…)") << form.toStdString();
    }
    server_->answerNext(RecordServer::error(400, "BAD_REQUEST", "100% no: tok%2B"));
    EXPECT_EQ(failure().description, "BAD_REQUEST: 100% no: tok%2B");
}

TEST_F(CloudKitHostileTest, ADatabaseThatGoesEndsItsCalls) {
    server_->answerNext({.delivery = Delivery::never});
    const PendingRecord running(database_->record("a"));
    const PendingRecord waiting(database_->record("a"));
    const Pending<CloudResult<CloudAccountStatus>> status(database_->accountStatus());
    const Pending<CloudResult<RecordDatabase::SavedRecord>> saving(
        database_->save(recordNamed("a", "x"), SavePolicy::allKeys));
    const Pending<CloudResult<void>> deleting(database_->deleteRecord("a"));
    EXPECT_TRUE(eventually([&] { return server_->requests().size() == 1; }));
    database_.reset();
    token_.reset();
    EXPECT_TRUE(eventually([&] { return deleting.isDone(); }));
    for (const int code :
         {codeOf(running.result()), codeOf(waiting.result()), codeOf(status.result()),
          codeOf(saving.result()), codeOf(deleting.result())})
        EXPECT_EQ(code, 20);
    token_.emplace(keys_, container());
}

TEST_F(CloudKitHostileTest, ADatabaseMayGoAtAnyMomentAndLeavesTheTokenAlone) {
    server_->set(RecordServer::Rotation::oldOneStays);
    for (int moment = 0; moment < 60; ++moment) {
        makeDatabase();
        const PendingRecord record(database_->record("a"));
        for (int turn = 0; turn < moment; ++turn) {
            QThread::usleep(100);
            QCoreApplication::processEvents();
        }
        database_.reset();
        const std::string token = storedToken();
        EXPECT_TRUE(eventually([&] { return record.isDone(); }));
        EXPECT_TRUE(record.result() || codeOf(record.result()) == 20) << moment;
        EXPECT_EQ(storedToken(), token) << moment;
    }
}

TEST_F(CloudKitHostileTest, TheEndOfTheApplicationEndsItsCalls) {
    server_->answerNext({.delivery = Delivery::never});
    const PendingRecord running(database_->record("a"));
    const PendingRecord waiting(database_->record("a"));
    EXPECT_TRUE(eventually([&] { return server_->requests().size() == 1; }));
    QTimer::singleShot(0, &*application_, &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_TRUE(eventually([&] { return waiting.isDone(); }));
    EXPECT_EQ(codeOf(running.result()), 20);
}

}  // namespace
}  // namespace brimwatch
