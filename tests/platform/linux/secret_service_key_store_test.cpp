#include "platform/linux/secret_service_key_store.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <memory>
#include <vector>

#include "platform/linux/secret_service_test.h"

namespace brimwatch {
namespace {

using test::phoneKey;
using Match = KeyStore::Match;

constexpr KeyPrompt forbidden = KeyPrompt::forbidden;
constexpr SecretServiceTiming impatient{.calls = std::chrono::milliseconds(150),
                                        .prompt = std::chrono::milliseconds(50)};

SecretBytes secret(std::string_view text) {
    return SecretBytes(text);
}

class SecretServiceKeyStoreTest : public test::SecretServiceTest {
  protected:
    std::vector<KeyStatus> allCalls(const KeyItem& item = phoneKey) {
        return {store_->add(item, secret("new"), forbidden),
                store_->copyMatching(item, forbidden).status,
                store_->update(item, secret("new"), forbidden), store_->remove(item, forbidden)};
    }
    std::string stored(const KeyItem& item = phoneKey) {
        const Match match = store_->copyMatching(item, forbidden);
        EXPECT_EQ(match.status, key_status::success);
        return std::string(match.value.view());
    }
};

TEST_F(SecretServiceKeyStoreTest, AKeyIsMadeReadChangedAndRemoved) {
    startKeyring();
    std::string bytes;
    for (int value = 0; value < 256; ++value)
        bytes += static_cast<char>(value);
    EXPECT_EQ(store_->add(phoneKey, secret(bytes), forbidden), 0);
    EXPECT_EQ(stored(), bytes);
    EXPECT_EQ(store_->update(phoneKey, secret("changed"), forbidden), 0);
    EXPECT_EQ(stored(), "changed");
    EXPECT_EQ(countOf(phoneKey), 1);
    EXPECT_EQ(store_->remove(phoneKey, forbidden), 0);
    EXPECT_EQ(countOf(phoneKey), 0);
}

TEST_F(SecretServiceKeyStoreTest, WhatIsNotThereIsNotFound) {
    startKeyring();
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, -25300);
    EXPECT_EQ(store_->update(phoneKey, secret("a"), forbidden), -25300);
    EXPECT_EQ(store_->remove(phoneKey, forbidden), -25300);
    EXPECT_EQ(countOf(phoneKey), 0);
}

TEST_F(SecretServiceKeyStoreTest, AKeyIsNeverMadeTwice) {
    startKeyring();
    EXPECT_EQ(store_->add(phoneKey, secret("first"), forbidden), 0);
    EXPECT_EQ(store_->add(phoneKey, secret("second"), forbidden), -25299);
    EXPECT_EQ(stored(), "first");
    EXPECT_EQ(countOf(phoneKey), 1);
}

TEST_F(SecretServiceKeyStoreTest, ServiceAndAccountTellKeysApart) {
    startKeyring();
    KeyItem otherAccount = phoneKey;
    otherAccount.account = "limits-key-v1";
    KeyItem otherService = phoneKey;
    otherService.service = "net.example.other";
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), 0);
    EXPECT_EQ(store_->add(otherAccount, secret("b"), forbidden), 0);
    EXPECT_EQ(store_->add(otherService, secret("c"), forbidden), 0);
    EXPECT_EQ(stored(phoneKey) + stored(otherAccount) + stored(otherService), "abc");
    EXPECT_EQ(store_->remove(otherAccount, forbidden), 0);
    EXPECT_EQ(stored(phoneKey) + stored(otherService), "ac");
}

TEST_F(SecretServiceKeyStoreTest, AnEmptyValueAndOneWithoutALabelAreKept) {
    startKeyring();
    const KeyItem plain = {.service = "a", .account = "b"};
    EXPECT_EQ(store_->add(plain, SecretBytes(), forbidden), 0);
    EXPECT_EQ(stored(plain), "");
}

TEST_F(SecretServiceKeyStoreTest, AValueThatIsNoBase64IsGivenAsItIs) {
    startKeyring();
    makeItem(phoneKey, "no base64!");
    EXPECT_EQ(stored(), "no base64!");
}

TEST_F(SecretServiceKeyStoreTest, OfEqualItemsAllAreChangedAndRemoved) {
    startKeyring();
    makeItem(phoneKey, "b25l");
    makeItem(phoneKey, "dHdv");
    EXPECT_EQ(countOf(phoneKey), 2);
    EXPECT_EQ(store_->add(phoneKey, secret("x"), forbidden), -25299);
    EXPECT_EQ(store_->update(phoneKey, secret("three"), forbidden), 0);
    EXPECT_EQ(stored(), "three");
    EXPECT_EQ(countOf(phoneKey), 2);
    EXPECT_EQ(store_->remove(phoneKey, forbidden), 0);
    EXPECT_EQ(countOf(phoneKey), 0);
}

TEST_F(SecretServiceKeyStoreTest, WhatIsLockedIsToldApartFromWhatIsMissing) {
    startKeyring();
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), 0);
    lock();
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -25308));
    startKeyring();
    EXPECT_EQ(stored(), "a");
}

TEST_F(SecretServiceKeyStoreTest, NoKeyIsMadeInALockedCollection) {
    startKeyring(Keyring::locked);
    EXPECT_EQ(allCalls(), (std::vector<KeyStatus>{-25308, -25300, -25300, -25300}));
    EXPECT_FALSE(store_->isMissing());
}

TEST_F(SecretServiceKeyStoreTest, WithoutADefaultCollectionNothingCanBeKept) {
    startKeyring(Keyring::none);
    EXPECT_EQ(allCalls(), (std::vector<KeyStatus>{-25291, -25300, -25300, -25300}));
    EXPECT_TRUE(store_->isMissing());
}

TEST_F(SecretServiceKeyStoreTest, WithoutAServiceNothingIsAvailable) {
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -25291));
    EXPECT_TRUE(store_->isMissing());
}

TEST_F(SecretServiceKeyStoreTest, WithoutABusNothingIsAvailable) {
    for (const QString& address : {QString(), QString("unix:path=/missing/bus"), QString("x")}) {
        store_.emplace(address);
        EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -25291));
        EXPECT_TRUE(store_->isMissing());
    }
}

TEST_F(SecretServiceKeyStoreTest, AServiceThatCouldBeStartedIsNotMissing) {
    offer("org.freedesktop.secrets");
    makeStore(impatient);
    EXPECT_FALSE(store_->isMissing());
}

TEST_F(SecretServiceKeyStoreTest, AServiceMayDieAndComeBack) {
    startKeyring();
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), 0);
    stopKeyring();
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -25291));
    startKeyring();
    EXPECT_EQ(stored(), "a");
}

TEST_F(SecretServiceKeyStoreTest, ABusMayDieAndComeBack) {
    startKeyring();
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), 0);
    keyring_.reset();
    other_.reset();
    daemon_->kill();
    EXPECT_TRUE(eventually([this] {
        return store_->copyMatching(phoneKey, forbidden).status == key_status::notAvailable;
    }));
    daemon_->start();
    other_.emplace(daemon_->address());
    startKeyring();
    EXPECT_EQ(stored(), "a");
}

TEST_F(SecretServiceKeyStoreTest, AServiceThatHangsIsNotAvailableUntilItGoesOn) {
    startKeyring();
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), 0);
    makeStore(impatient);
    keyring_->signal(SIGSTOP);
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -25291));
    EXPECT_FALSE(store_->isMissing());
    keyring_->signal(SIGCONT);
    makeStore();
    // What was asked of it meanwhile it may have done by now, or not.
    EXPECT_TRUE(eventually([this] {
        const KeyStatus status = store_->copyMatching(phoneKey, forbidden).status;
        return status == key_status::success || status == key_status::itemNotFound;
    }));
}

// What a service says to a call.
using Answer = std::function<QDBusMessage(test::FakeService&, const QDBusMessage&)>;

Answer saying(const QVariantList& arguments) {
    return [arguments](test::FakeService&, const QDBusMessage& call) {
        return call.createReply(arguments);
    };
}

Answer failing(const QString& name) {
    return [name](test::FakeService&, const QDBusMessage& call) {
        return call.createErrorReply(name, QStringLiteral("test"));
    };
}

QVariant path(const char* text) {
    return QVariant::fromValue(QDBusObjectPath(QLatin1String(text)));
}

QVariant paths(const QStringList& texts) {
    QList<QDBusObjectPath> list;
    for (const QString& text : texts)
        list << QDBusObjectPath(text);
    return QVariant::fromValue(list);
}

QVariant variant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

QVariant busSecret(const char* value) {
    return QVariant::fromValue(BusSecret{.session = QDBusObjectPath("/s"), .value = value});
}

Answer completing(bool isDismissed) {
    return [isDismissed](test::FakeService& service, const QDBusMessage& call) {
        service.say(call.path(), "org.freedesktop.Secret.Prompt", "Completed",
                    {isDismissed, variant(QString())});
        return call.createReply();
    };
}

class ScriptedSecretServiceTest : public SecretServiceKeyStoreTest {
  protected:
    // Has no items, and makes one after a prompt.
    test::FakeSecretService::Answers promptingAnswers() {
        return {{"SearchItems", saying({paths({}), paths({})})},
                {"ReadAlias", saying({path("/c")})},
                {"OpenSession", saying({variant(QString()), path("/s")})},
                {"CreateItem", saying({path("/"), path("/p")})},
                {"Prompt", completing(false)},
                {"Dismiss", saying({})},
                {"Close", saying({})}};
    }
    // Has one item.
    test::FakeSecretService::Answers itemAnswers() {
        return {{"SearchItems", saying({paths({"/i"}), paths({})})},
                {"OpenSession", saying({variant(QString()), path("/s")})},
                {"GetSecret", saying({busSecret("YWJj")})},
                {"SetSecret", saying({})},
                {"Delete", saying({path("/")})},
                {"Close", saying({})}};
    }
    // What was said without waiting for an answer has arrived, too.
    void stop() {
        if (!service_) return;
        store_->isMissing();
        service_->stop();
    }
    void serve(test::FakeSecretService::Answers answers) {
        stop();
        service_.reset();
        EXPECT_TRUE(eventually([this] { return !other_->sees("org.freedesktop.secrets"); }));
        service_.emplace(daemon_->address(), std::move(answers));
    }
    bool wasCalled(const QString& method) {
        stop();
        return service_->wasCalled(method);
    }
    void TearDown() override {
        stop();
        service_.reset();
        SecretServiceKeyStoreTest::TearDown();
    }

    std::optional<test::FakeSecretService> service_;
};

TEST_F(ScriptedSecretServiceTest, WithoutLeaveAPromptIsDismissedAndNeverShown) {
    serve(promptingAnswers());
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), -25308);
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, -25300);
    EXPECT_FALSE(wasCalled("Prompt"));
    EXPECT_TRUE(service_->wasCalled("Dismiss"));
}

TEST_F(ScriptedSecretServiceTest, WithoutLeaveNothingIsAskedToBeUnlocked) {
    auto answers = promptingAnswers();
    answers["SearchItems"] = saying({paths({}), paths({"/i"})});
    serve(answers);
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -25308));
    EXPECT_FALSE(wasCalled("Unlock"));
    EXPECT_FALSE(service_->wasCalled("Prompt"));
    EXPECT_FALSE(service_->wasCalled("CreateItem"));
}

TEST_F(ScriptedSecretServiceTest, WithLeaveThePromptIsShownAndWaitedFor) {
    serve(promptingAnswers());
    EXPECT_EQ(store_->add(phoneKey, secret("a"), KeyPrompt::allowed), 0);
    EXPECT_TRUE(wasCalled("Prompt"));
    EXPECT_FALSE(service_->wasCalled("Dismiss"));
}

TEST_F(ScriptedSecretServiceTest, AUserWhoDismissesThePromptHasCancelled) {
    auto answers = promptingAnswers();
    answers["Prompt"] = completing(true);
    serve(answers);
    EXPECT_EQ(store_->add(phoneKey, secret("a"), KeyPrompt::allowed), -128);
}

TEST_F(ScriptedSecretServiceTest, APromptThatNobodyAnswersIsDismissed) {
    auto answers = promptingAnswers();
    answers["Prompt"] = saying({});
    serve(answers);
    makeStore({.calls = std::chrono::seconds(20), .prompt = std::chrono::milliseconds(30)});
    EXPECT_EQ(store_->add(phoneKey, secret("a"), KeyPrompt::allowed), -128);
    EXPECT_TRUE(wasCalled("Dismiss"));
}

TEST_F(ScriptedSecretServiceTest, AServiceThatEndsWhileItPromptsIsNotAvailable) {
    auto answers = promptingAnswers();
    answers["Prompt"] = [](test::FakeService& service, const QDBusMessage& call) {
        service.release("org.freedesktop.secrets");
        return call.createReply();
    };
    serve(answers);
    EXPECT_EQ(store_->add(phoneKey, secret("a"), KeyPrompt::allowed), -25291);
}

TEST_F(ScriptedSecretServiceTest, WithLeaveLockedItemsAreUnlockedFirst) {
    auto answers = itemAnswers();
    const auto isUnlocked = std::make_shared<bool>(false);
    answers["SearchItems"] = [isUnlocked](test::FakeService&, const QDBusMessage& call) {
        return *isUnlocked ? call.createReply({paths({"/i"}), paths({})})
                           : call.createReply({paths({}), paths({"/i"})});
    };
    answers["Unlock"] = saying({paths({}), path("/p")});
    answers["Prompt"] = [isUnlocked](test::FakeService& service, const QDBusMessage& call) {
        *isUnlocked = true;
        return completing(false)(service, call);
    };
    serve(answers);
    const Match match = store_->copyMatching(phoneKey, KeyPrompt::allowed);
    EXPECT_EQ(match.status, 0);
    EXPECT_EQ(match.value.view(), "abc");
}

TEST_F(ScriptedSecretServiceTest, WhatStaysLockedAfterAPromptIsLocked) {
    auto answers = promptingAnswers();
    answers["SearchItems"] = saying({paths({}), paths({"/i"})});
    answers["Unlock"] = saying({paths({}), path("/")});
    serve(answers);
    EXPECT_EQ(store_->copyMatching(phoneKey, KeyPrompt::allowed).status, -25308);
}

TEST_F(ScriptedSecretServiceTest, WithLeaveALockedCollectionIsUnlockedForANewKey) {
    auto answers = promptingAnswers();
    const auto isUnlocked = std::make_shared<bool>(false);
    answers["CreateItem"] = [isUnlocked](test::FakeService&, const QDBusMessage& call) {
        return *isUnlocked ? call.createReply({path("/i"), path("/")})
                           : call.createErrorReply("org.freedesktop.Secret.Error.IsLocked", "");
    };
    answers["Unlock"] = [isUnlocked](test::FakeService&, const QDBusMessage& call) {
        *isUnlocked = true;
        return call.createReply({paths({"/c"}), path("/")});
    };
    serve(answers);
    EXPECT_EQ(store_->add(phoneKey, secret("a"), forbidden), -25308);
    EXPECT_EQ(store_->add(phoneKey, secret("a"), KeyPrompt::allowed), 0);
}

TEST_F(ScriptedSecretServiceTest, ASessionThatIsLostIsOpenedOnceMore) {
    auto answers = itemAnswers();
    const auto count = std::make_shared<int>(0);
    answers["GetSecret"] = [count](test::FakeService&, const QDBusMessage& call) {
        return ++*count == 1 ? call.createErrorReply("org.freedesktop.Secret.Error.NoSession", "")
                             : call.createReply({busSecret("YWJj")});
    };
    serve(answers);
    EXPECT_EQ(stored(), "abc");
    answers["GetSecret"] = failing("org.freedesktop.Secret.Error.NoSession");
    serve(answers);
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, -25291);
}

TEST_F(ScriptedSecretServiceTest, AnItemThatVanishesMeanwhileIsNotFound) {
    auto answers = itemAnswers();
    for (const char* method : {"GetSecret", "SetSecret", "Delete"})
        answers[method] = failing("org.freedesktop.DBus.Error.UnknownMethod");
    serve(answers);
    EXPECT_EQ(allCalls(), (std::vector<KeyStatus>{-25299, -25300, -25300, -25300}));
}

TEST_F(ScriptedSecretServiceTest, TheItemThatWasChangedLastIsRead) {
    for (const char* latest : {"/a", "/b", "/c"}) {
        auto answers = itemAnswers();
        answers["SearchItems"] = saying({paths({"/a", "/b", "/c"}), paths({})});
        answers["Get"] = [latest](test::FakeService&, const QDBusMessage& call) {
            const quint64 time = call.path() == QLatin1String(latest) ? 2 : 1;
            return call.createReply(variant(QVariant::fromValue(time)));
        };
        answers["GetSecret"] = [](test::FakeService&, const QDBusMessage& call) {
            return call.createReply(busSecret(call.path().toLatin1().toBase64()));
        };
        serve(answers);
        EXPECT_EQ(stored(), latest);
    }
}

TEST_F(ScriptedSecretServiceTest, OfItemsThatWereChangedTogetherTheFirstIsRead) {
    auto answers = itemAnswers();
    answers["SearchItems"] = saying({paths({"/a", "/b"}), paths({})});
    answers["GetSecret"] = [](test::FakeService&, const QDBusMessage& call) {
        return call.createReply(busSecret(call.path().toLatin1().toBase64()));
    };
    answers["Get"] = saying({variant(QVariant::fromValue<quint64>(7))});
    serve(answers);
    EXPECT_EQ(stored(), "/a");
    answers["Get"] = failing("org.freedesktop.DBus.Error.UnknownProperty");
    serve(answers);
    EXPECT_EQ(stored(), "/a");
}

TEST_F(ScriptedSecretServiceTest, OfSeveralItemsOneFailureIsTold) {
    for (const char* failingItem : {"/a", "/b"}) {
        auto answers = itemAnswers();
        answers["SearchItems"] = saying({paths({"/a", "/b"}), paths({})});
        for (const char* method : {"SetSecret", "Delete"}) {
            const Answer usual = answers[method];
            answers[method] = [failingItem, usual](test::FakeService& service,
                                                   const QDBusMessage& call) {
                return call.path() == QLatin1String(failingItem)
                           ? call.createErrorReply("org.freedesktop.Secret.Error.IsLocked", "")
                           : usual(service, call);
            };
        }
        serve(answers);
        EXPECT_EQ(store_->update(phoneKey, secret("x"), forbidden), -25308) << failingItem;
        EXPECT_EQ(store_->remove(phoneKey, forbidden), -25308) << failingItem;
    }
}

TEST_F(ScriptedSecretServiceTest, TheTimeThatTheUserTakesDoesNotCount) {
    auto answers = itemAnswers();
    const auto isUnlocked = std::make_shared<bool>(false);
    answers["SearchItems"] = [isUnlocked](test::FakeService&, const QDBusMessage& call) {
        return *isUnlocked ? call.createReply({paths({"/i"}), paths({})})
                           : call.createReply({paths({}), paths({"/i"})});
    };
    answers["Unlock"] = saying({paths({}), path("/p")});
    answers["Prompt"] = [isUnlocked](test::FakeService& service, const QDBusMessage& call) {
        QThread::msleep(1500);
        *isUnlocked = true;
        return completing(false)(service, call);
    };
    serve(answers);
    makeStore({.calls = std::chrono::milliseconds(1000), .prompt = std::chrono::seconds(60)});
    EXPECT_EQ(store_->copyMatching(phoneKey, KeyPrompt::allowed).value.view(), "abc");
}

TEST_F(ScriptedSecretServiceTest, AServiceThatWasSilentIsLeftAloneUnlessTheUserAsks) {
    auto answers = itemAnswers();
    const auto isSilent = std::make_shared<std::atomic<bool>>(true);
    answers["SearchItems"] = [isSilent](test::FakeService&, const QDBusMessage& call) {
        return *isSilent ? QDBusMessage() : call.createReply({paths({"/i"}), paths({})});
    };
    serve(answers);
    makeStore({.calls = std::chrono::milliseconds(1000)});
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, key_status::notAvailable));
    EXPECT_FALSE(store_->isMissing());
    *isSilent = false;
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, key_status::notAvailable);
    EXPECT_EQ(store_->copyMatching(phoneKey, KeyPrompt::allowed).value.view(), "abc");
    EXPECT_EQ(stored(), "abc");
    EXPECT_FALSE(wasCalled("SetSecret"));
    EXPECT_EQ(service_->calls().filter("SearchItems").size(), 3);
}

TEST_F(ScriptedSecretServiceTest, AServiceThatWasSilentToTheFirstQuestionOfAllIsLeftAloneToo) {
    auto answers = itemAnswers();
    answers["ReadAlias"] = [](test::FakeService&, const QDBusMessage&) { return QDBusMessage(); };
    serve(answers);
    makeStore({.calls = std::chrono::milliseconds(1000)});
    EXPECT_FALSE(store_->isMissing());
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, key_status::notAvailable);
}

TEST_F(ScriptedSecretServiceTest, AServiceThatWasSilentIsAskedAgainAfterItsRest) {
    auto answers = itemAnswers();
    const auto isSilent = std::make_shared<std::atomic<bool>>(true);
    answers["SearchItems"] = [isSilent](test::FakeService&, const QDBusMessage& call) {
        return *isSilent ? QDBusMessage() : call.createReply({paths({"/i"}), paths({})});
    };
    serve(answers);
    makeStore({.calls = std::chrono::milliseconds(1000), .rest = std::chrono::milliseconds(1)});
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, key_status::notAvailable);
    *isSilent = false;
    EXPECT_TRUE(eventually([this] {
        return store_->copyMatching(phoneKey, forbidden).status == key_status::success;
    }));
}

TEST_F(ScriptedSecretServiceTest, AServiceThatEndsWhileItIsAskedIsAskedAgainAtOnce) {
    auto answers = itemAnswers();
    answers["SearchItems"] = failing("org.freedesktop.DBus.Error.NoReply");
    serve(answers);
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, key_status::notAvailable);
    serve(itemAnswers());
    EXPECT_EQ(stored(), "abc");
}

TEST_F(ScriptedSecretServiceTest, NoSessionStaysOpen) {
    serve(itemAnswers());
    EXPECT_EQ(stored(), "abc");
    EXPECT_EQ(stored(), "abc");
    EXPECT_TRUE(wasCalled("Close"));
}

TEST_F(ScriptedSecretServiceTest, AnItemInMemoryOnlyIsPassedOver) {
    auto answers = itemAnswers();
    answers["SearchItems"] =
        saying({paths({"/org/freedesktop/secrets/collection/session/1"}), paths({})});
    serve(answers);
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, -25300);
}

TEST_F(ScriptedSecretServiceTest, AnAnswerOfAnotherFormIsAnInternalError) {
    auto answers = itemAnswers();
    answers["SearchItems"] = saying({QString("nonsense")});
    serve(answers);
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -67671));
    answers = itemAnswers();
    answers["GetSecret"] = saying({QByteArray("YWJj")});
    serve(answers);
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, -67671);
}

TEST_F(ScriptedSecretServiceTest, ASandboxThatForbidsItLacksTheRight) {
    auto answers = itemAnswers();
    answers["SearchItems"] = failing("org.freedesktop.DBus.Error.AccessDenied");
    serve(answers);
    EXPECT_EQ(allCalls(), std::vector<KeyStatus>(4, -34018));
}

TEST_F(ScriptedSecretServiceTest, AServiceWithoutPlainSessionsIsOfNoUse) {
    auto answers = itemAnswers();
    answers["OpenSession"] = failing("org.freedesktop.DBus.Error.NotSupported");
    serve(answers);
    EXPECT_EQ(store_->copyMatching(phoneKey, forbidden).status, -25291);
}

TEST(SecretServiceTimingTest, IsTwoSecondsAMinuteForTheUserAndFiveOfRest) {
    EXPECT_EQ(SecretServiceTiming().calls, std::chrono::seconds(2));
    EXPECT_EQ(SecretServiceTiming().prompt, std::chrono::minutes(1));
    EXPECT_EQ(SecretServiceTiming().rest, std::chrono::minutes(5));
}

TEST(SecretServiceStatusesTest, EachErrorHasItsStatus) {
    struct Row {
        const char* error;
        KeyStatus service;
        KeyStatus collection;
        KeyStatus item;
    };
    const std::vector<Row> rows = {
        {"org.freedesktop.Secret.Error.IsLocked", -25308, -25308, -25308},
        {"org.freedesktop.Secret.Error.NoSuchObject", -25300, -25291, -25300},
        {"org.freedesktop.Secret.Error.NoSession", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.ServiceUnknown", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.NameHasNoOwner", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.Spawn.ChildExited", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.NoReply", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.Timeout", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.TimedOut", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.Disconnected", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.NoServer", -25291, -25291, -25291},
        {"org.freedesktop.DBus.Error.UnknownMethod", -67671, -25291, -25300},
        {"org.freedesktop.DBus.Error.UnknownObject", -67671, -25291, -25300},
        {"org.freedesktop.DBus.Error.NotSupported", -25291, -67671, -67671},
        {"org.freedesktop.DBus.Error.AccessDenied", -34018, -34018, -34018},
        {"org.freedesktop.DBus.Error.Failed", -67671, -67671, -67671},
        {"", -67671, -67671, -67671},
    };
    for (const Row& row : rows) {
        const QString error = QLatin1String(row.error);
        EXPECT_EQ(statusOfBusError(error, SecretObject::service), row.service) << row.error;
        EXPECT_EQ(statusOfBusError(error, SecretObject::collection), row.collection) << row.error;
        EXPECT_EQ(statusOfBusError(error, SecretObject::item), row.item) << row.error;
    }
}

}  // namespace
}  // namespace brimwatch
