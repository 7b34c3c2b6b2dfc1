#include "updates/mac_private_update_credentials.h"

#include <openssl/evp.h>

#include <optional>

#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

using Reason = MacPrivateUpdateFailure::Reason;

constexpr std::string_view usernameKey = "username";
constexpr std::string_view passwordKey = "password";
constexpr std::size_t longestUsername = 128;
constexpr std::size_t longestPassword = 1024;

constexpr bool isControlCharacter(char32_t scalar) {
    return scalar < U' ' || (scalar >= U'\u007F' && scalar <= U'\u009F');
}

// A surrogate without its partner is no text.
bool isPlainText(std::string_view text) {
    while (!text.empty()) {
        const DecodedScalar decoded = decodeUtf8(text);
        if (!decoded.valid || isControlCharacter(decoded.scalar)) return false;
        text.remove_prefix(decoded.length);
    }
    return true;
}

bool isValue(std::string_view text, std::size_t longest) {
    return !text.empty() && text.size() <= longest && isPlainText(text);
}

const std::string* textAt(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    return value != nullptr ? value->string() : nullptr;
}

}  // namespace

MacPrivateUpdateResult<MacPrivateUpdateCredentials> parseCredentials(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > privateUpdateSizeLimit) {
        return privateUpdateFailure(Reason::inputTooLarge);
    }
    const std::optional<JsonObject> object = parseJsonObject(bytes);
    if (!object || object->members().size() != 2) {
        return privateUpdateFailure(Reason::invalidCredentials);
    }
    const std::string* username = textAt(*object, usernameKey);
    const std::string* password = textAt(*object, passwordKey);
    const bool areValid =
        username != nullptr && password != nullptr && isValue(*username, longestUsername) &&
        username->find(':') == std::string::npos && isValue(*password, longestPassword);
    if (!areValid) return privateUpdateFailure(Reason::invalidCredentials);
    return MacPrivateUpdateCredentials{.username = *username, .password = SecretBytes(*password)};
}

SecretBytes credentialsJson(const MacPrivateUpdateCredentials& credentials) {
    JsonObject object;
    object.set(usernameKey, credentials.username);
    object.set(passwordKey, credentials.password.view());
    return SecretBytes(writeJson(std::move(object), JsonLayout::compact));
}

std::string authorizationValue(const MacPrivateUpdateCredentials& credentials) {
    const std::string text = credentials.username + ':' + std::string(credentials.password.view());
    // Four for each three that were begun, and the NUL that the library adds.
    std::string encoded((text.size() + 2) / 3 * 4 + 1, '\0');
    ::EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                      reinterpret_cast<const unsigned char*>(text.data()),
                      static_cast<int>(text.size()));
    encoded.pop_back();
    return "Basic " + encoded;
}

}  // namespace brimwatch
