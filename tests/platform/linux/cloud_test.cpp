#include "platform/linux/cloud_test.h"

#include <QByteArray>

namespace brimwatch::test {
namespace {

QString logged;  // NOLINT: the message handler of Qt has no context

void keepMessage(QtMsgType /*type*/, const QMessageLogContext& context, const QString& message) {
    logged += QLatin1String(context.category) + QLatin1String(": ") + message + QLatin1Char('\n');
}

}  // namespace

const QString& CloudTest::log() {
    return logged;
}

void CloudTest::SetUp() {
    logged.clear();
    qInstallMessageHandler(keepMessage);
    ApplicationTest::SetUp();
    server_.emplace();
    token_.emplace(keys_, container());
    makeDatabase();
}

void CloudTest::TearDown() {
    database_.reset();
    settle();
    server_.reset();
    qInstallMessageHandler(nullptr);
    for (const char* secret : {"tok+en", "tok%2Ben", "tok%2ben", "tok en"})
        EXPECT_FALSE(logged.contains(QLatin1String(secret))) << logged.toStdString();
    ApplicationTest::TearDown();
}

CloudContainer CloudTest::container() const {
    return {.identifier = RecordServer::container,
            .environment = RecordServer::environment,
            .apiToken = RecordServer::apiToken,
            .address = server_->address()};
}

void CloudTest::makeDatabase(CloudTiming timing) {
    database_.reset();
    database_.emplace(container(), *token_, timing);
}

void CloudTest::signIn(const std::string& user) {
    keys_.values[tokenItem] = SecretBytes(server_->signIn(user));
}

std::string CloudTest::storedToken() const {
    const auto token = keys_.values.find(tokenItem);
    return token != keys_.values.end() ? std::string(token->second.view()) : std::string();
}

RecordDatabase::SavedRecord CloudTest::save(const CloudRecord& record, SavePolicy policy) {
    const auto result = wait(database_->save(record, policy));
    EXPECT_TRUE(result) << result.error().description;
    return result ? *result : std::nullopt;
}

}  // namespace brimwatch::test
