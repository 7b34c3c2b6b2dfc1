#include "updates/mac_private_update_credentials.h"

#include <gtest/gtest.h>

#include "harness/random.h"

namespace brimwatch {
namespace {

using Reason = MacPrivateUpdateFailure::Reason;

std::string document(const std::string& username, const std::string& password) {
    return R"({"username":")" + username + R"(","password":")" + password + "\"}";
}

bool passes(const std::string& bytes) {
    const auto credentials = parseCredentials(bytes);
    if (!credentials) {
        EXPECT_EQ(credentials.error().reason, Reason::invalidCredentials) << bytes;
    }
    return credentials.has_value();
}

MacPrivateUpdateCredentials credentials(std::string_view username, std::string_view password) {
    return {.username = std::string(username), .password = SecretBytes(password)};
}

TEST(MacPrivateUpdateCredentials, AreAnObjectOfTwoStrings) {
    EXPECT_EQ(parseCredentials(document("me", "secret")), credentials("me", "secret"));
    EXPECT_EQ(parseCredentials(" {\n \"password\": \"s\\u00e9\", \"username\": \"m\" }\n"),
              credentials("m", "sé"));
}

TEST(MacPrivateUpdateCredentials, OfAnotherFormAreRefused) {
    for (const char* text :
         {"x", "{", "null", "[]", "\"me\"", "1", "{}", R"({"username":"me"})",
          R"({"password":"secret"})", R"({"username":"me","password":null})",
          R"({"username":1,"password":"secret"})", R"({"username":"me","password":["secret"]})",
          R"({"Username":"me","password":"secret"})", R"({"username":"me","password":"secret"} x)",
          R"({"username":"me","password":"secret","host":"a"})",
          R"({"username":"me","password":"secret","":""})"})
        EXPECT_FALSE(passes(text)) << text;
}

TEST(MacPrivateUpdateCredentials, HaveNoThirdMember) {
    EXPECT_FALSE(passes(R"({"username":"me","password":"secret","note":null})"));
}

TEST(MacPrivateUpdateCredentials, MayHaveAColonInThePasswordAlone) {
    EXPECT_FALSE(passes(document("me:you", "secret")));
    EXPECT_FALSE(passes(document(":", "secret")));
    EXPECT_TRUE(passes(document("me", "a:b:")));
}

TEST(MacPrivateUpdateCredentials, AreNeverEmpty) {
    EXPECT_FALSE(passes(document("", "secret")));
    EXPECT_FALSE(passes(document("me", "")));
    EXPECT_TRUE(passes(document("m", "s")));
}

TEST(MacPrivateUpdateCredentials, AreLimitedInBytesNotInCharacters) {
    EXPECT_TRUE(passes(document(std::string(128, 'u'), "s")));
    EXPECT_FALSE(passes(document(std::string(129, 'u'), "s")));
    EXPECT_TRUE(passes(document("u", std::string(1024, 's'))));
    EXPECT_FALSE(passes(document("u", std::string(1025, 's'))));
    std::string syllables;
    while (syllables.size() < 126)
        syllables += "한";
    EXPECT_TRUE(passes(document(syllables + "uu", "s")));
    EXPECT_FALSE(passes(document(syllables + "é" + "u", "s")));
}

TEST(MacPrivateUpdateCredentials, HoldNoControlCharacter) {
    for (const char* escape :
         {"\\t", "\\n", "\\r", "\\u0000", "\\u001f", "\\u007f", "\\u0080", "\\u009f", "\\u0085"}) {
        EXPECT_FALSE(passes(document(std::string("m") + escape, "s"))) << escape;
        EXPECT_FALSE(passes(document("m", std::string("s") + escape + "s"))) << escape;
    }
    EXPECT_FALSE(passes(document("m", "s\x7f")));
    for (const char* text : {" ", "~", "\\u00a0", "\\u2028", "\\\"", "\\\\"}) {
        EXPECT_TRUE(passes(document(text, text))) << text;
    }
}

TEST(MacPrivateUpdateCredentials, AreUnicode) {
    EXPECT_FALSE(passes(document("m", "s\\ud800")));
    EXPECT_FALSE(passes(document("\\udc00", "s")));
    EXPECT_FALSE(passes(document("m", "\xff")));
    EXPECT_TRUE(passes(document("m", "\\ud83d\\ude80")));
}

TEST(MacPrivateUpdateCredentials, AreFromOneByteTo8192) {
    const std::string text = document("me", "secret");
    EXPECT_EQ(parseCredentials("").error().reason, Reason::inputTooLarge);
    EXPECT_TRUE(passes(text + std::string(8192 - text.size(), ' ')));
    EXPECT_EQ(parseCredentials(text + std::string(8193 - text.size(), ' ')).error().reason,
              Reason::inputTooLarge);
}

TEST(MacPrivateUpdateCredentials, AreWrittenAsTheyAreRead) {
    EXPECT_EQ(credentialsJson(credentials("me", "a\"b")).view(),
              R"({"password":"a\"b","username":"me"})");
    EXPECT_EQ(parseCredentials(credentialsJson(credentials("한", "é:\\")).view()),
              credentials("한", "é:\\"));
}

TEST(MacPrivateUpdateCredentials, AreEqualFieldByField) {
    EXPECT_EQ(credentials("a", "b"), credentials("a", "b"));
    EXPECT_NE(credentials("a", "b"), credentials("c", "b"));
    EXPECT_NE(credentials("a", "b"), credentials("a", "c"));
}

// The examples of RFC 7617.
TEST(MacPrivateUpdateCredentials, AreSentAsBasicAuthorization) {
    EXPECT_EQ(authorizationValue(credentials("Aladdin", "open sesame")),
              "Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ==");
    EXPECT_EQ(authorizationValue(credentials("test", "123£")), "Basic dGVzdDoxMjPCow==");
    EXPECT_EQ(authorizationValue(credentials("a", "b")), "Basic YTpi");
}

TEST(MacPrivateUpdateCredentials, OfAnyLengthAreSentWithoutLineBreaks) {
    const std::string value =
        authorizationValue(credentials(std::string(128, 'u'), std::string(1024, 's')));
    EXPECT_EQ(value.size(), 6U + 1540U);
    EXPECT_EQ(value.find_first_of("\r\n\0"), std::string::npos);
    EXPECT_TRUE(value.ends_with("cw=="));
}

TEST(MacPrivateUpdateCredentials, SurviveAnyBytesInTheirPlace) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::string good = document("me", "secret");
    for (int round = 0; round < 5000; ++round) {
        std::string text = good;
        for (int change = 0; change < 3; ++change)
            text[random.below(text.size())] = static_cast<char>(random.below(256));
        const auto parsed = parseCredentials(text);
        if (parsed) {
            EXPECT_EQ(parseCredentials(credentialsJson(*parsed).view()), parsed) << text;
        }
    }
}

}  // namespace
}  // namespace brimwatch
