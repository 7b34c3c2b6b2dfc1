#include "platform/linux/secret_service_test.h"

#include <sys/prctl.h>

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QSemaphore>
#include <algorithm>
#include <csignal>
#include <utility>

namespace brimwatch::test {
namespace {

constexpr const char* keyringProgram = "/usr/bin/gnome-keyring-daemon";
constexpr QLatin1String serviceName("org.freedesktop.secrets");
constexpr QLatin1String servicePath("/org/freedesktop/secrets");
constexpr QLatin1String serviceInterface("org.freedesktop.Secret.Service");

BusAttributes attributesOf(const KeyItem& item) {
    return {{"xdg:schema", "net.quillmoor.brimwatch.Item"},
            {"service", QString::fromStdString(item.service)},
            {"account", QString::fromStdString(item.account)}};
}

}  // namespace

FakeSecretService::FakeSecretService(const QString& address, Answers answers) {
    QSemaphore isReady;
    thread_.reset(QThread::create([this, &isReady, address, answers = std::move(answers)] {
        FakeService service(address);
        service.handle([&](const QDBusMessage& call) {
            const auto answer = answers.find(call.member());
            return answer != answers.end()
                       ? answer->second(service, call)
                       : call.createErrorReply(QStringLiteral("net.example.Unexpected"), {});
        });
        service.own(serviceName);
        isReady.release();
        QEventLoop().exec();
        calls_ = service.calls();
    }));
    thread_->start();
    isReady.acquire();
}

void FakeSecretService::stop() {
    if (!thread_) return;
    thread_->quit();
    thread_->wait();
    thread_.reset();
}

bool FakeSecretService::wasCalled(const QString& method) const {
    return std::any_of(calls_.begin(), calls_.end(),
                       [&](const QString& call) { return call.section(' ', 0, 0) == method; });
}

void SecretServiceTest::SetUp() {
    BusTest::SetUp();
    registerSecretServiceTypes();
    other_.emplace(daemon_->address());
    makeStore();
}

void SecretServiceTest::TearDown() {
    store_.reset();
    other_.reset();
    stopKeyring();
    BusTest::TearDown();
}

void SecretServiceTest::makeStore(SecretServiceTiming timing) {
    store_.emplace(daemon_->address(), timing);
}

void SecretServiceTest::startKeyring(Keyring state) {
    stopKeyring();
    std::vector<std::string> arguments = {"--foreground", "--components=secrets",
                                          "--control-directory=" + home_.file("control")};
    if (state != Keyring::none) arguments.emplace_back("--unlock");
    keyring_.emplace(
        ProcessRequest{.program = keyringProgram,
                       .arguments = arguments,
                       .environment = {{"DBUS_SESSION_BUS_ADDRESS", daemon_->addressText()},
                                       {"HOME", home_.path()},
                                       {"XDG_DATA_HOME", home_.file("data")},
                                       {"XDG_RUNTIME_DIR", home_.path()}},
                       .input = "test-pass",
                       .prepare = [] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }});
    EXPECT_TRUE(eventually([this] { return other_->sees(serviceName); }));
    if (state == Keyring::locked) lock();
}

void SecretServiceTest::stopKeyring() {
    keyring_.reset();
    if (other_) {
        EXPECT_TRUE(eventually([this] { return !other_->sees(serviceName); }));
    }
}

QDBusMessage SecretServiceTest::call(const QString& path, const QString& interface,
                                     const QString& method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName, path, interface, method);
    message.setArguments(arguments);
    QDBusMessage answer = other_->connection().call(message);
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
    return answer;
}

void SecretServiceTest::lock() {
    const auto path = call(servicePath, serviceInterface, "ReadAlias", {"default"})
                          .arguments()
                          .at(0)
                          .value<QDBusObjectPath>();
    const QList<QDBusObjectPath> all = {path};
    call(servicePath, serviceInterface, "Lock", {QVariant::fromValue(all)});
}

void SecretServiceTest::makeItem(const KeyItem& item, const QByteArray& value) const {
    const auto session = call(servicePath, serviceInterface, "OpenSession",
                              {"plain", QVariant::fromValue(QDBusVariant(QString()))})
                             .arguments()
                             .at(1)
                             .value<QDBusObjectPath>();
    const BusSecret secret{.session = session, .value = value, .contentType = "text/plain"};
    const QVariantMap properties = {
        {"org.freedesktop.Secret.Item.Label", "x"},
        {"org.freedesktop.Secret.Item.Attributes", QVariant::fromValue(attributesOf(item))}};
    call("/org/freedesktop/secrets/aliases/default", "org.freedesktop.Secret.Collection",
         "CreateItem", {properties, QVariant::fromValue(secret), false});
}

qsizetype SecretServiceTest::countOf(const KeyItem& item) const {
    const QDBusMessage answer = call(servicePath, serviceInterface, "SearchItems",
                                     {QVariant::fromValue(attributesOf(item))});
    return qdbus_cast<QList<QDBusObjectPath>>(answer.arguments().at(0)).size() +
           qdbus_cast<QList<QDBusObjectPath>>(answer.arguments().at(1)).size();
}

}  // namespace brimwatch::test
