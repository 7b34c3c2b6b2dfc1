#include "platform/linux/cloud_user_token.h"

#include <QLoggingCategory>
#include <algorithm>
#include <utility>

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(cloudLog, "net.quillmoor.brimwatch.mac.cloud")

constexpr std::size_t longestToken = 8192;

}  // namespace

bool CloudUserToken::isPlausible(std::string_view text) {
    constexpr char firstVisible = '!';
    constexpr char lastVisible = '~';
    return !text.empty() && text.size() <= longestToken &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= firstVisible && c <= lastVisible; });
}

CloudUserToken::CloudUserToken(KeyStore& store, const CloudContainer& container)
    : store_(store),
      item_{.service = "net.quillmoor.brimwatch.cloudkit",
            .account = container.identifier + '/' + container.environment,
            .label = "Brimwatch? iCloud 로그인"} {}

KeyStore::Match CloudUserToken::current() {
    if (token_) {
        if (!isStored_) store(KeyPrompt::forbidden);
        return {.status = key_status::success, .value = *token_};
    }
    KeyStore::Match match = store_.copyMatching(item_, KeyPrompt::forbidden);
    if (match.status != key_status::success) return match;
    if (!isPlausible(match.value.view())) return {.status = key_status::itemNotFound};
    token_ = match.value;
    return match;
}

KeyStatus CloudUserToken::set(const SecretBytes& token, KeyPrompt prompt) {
    token_ = token;
    isStored_ = false;
    return store(prompt);
}

void CloudUserToken::succeed(const SecretBytes& sent, const SecretBytes& successor) {
    if (!token_ || *token_ != sent || successor == sent) return;
    set(successor, KeyPrompt::forbidden);
}

void CloudUserToken::refuse(const SecretBytes& sent) {
    if (token_ && *token_ == sent) forget(KeyPrompt::forbidden);
}

KeyStatus CloudUserToken::forget(KeyPrompt prompt) {
    token_.reset();
    isStored_ = true;
    const KeyStatus status = store_.remove(item_, prompt);
    return status == key_status::itemNotFound ? key_status::success : status;
}

KeyStatus CloudUserToken::store(KeyPrompt prompt) {
    // A prompt lets other calls come between.
    const SecretBytes token = *token_;
    KeyStatus status = store_.update(item_, token, prompt);
    if (status == key_status::itemNotFound) status = store_.add(item_, token, prompt);
    const bool isWritten = status == key_status::success;
    if (isWritten && !token_) static_cast<void>(store_.remove(item_, KeyPrompt::forbidden));
    isStored_ = !token_ || (isWritten && *token_ == token);
    if (!isWritten) qCWarning(cloudLog, "로그인을 저장하지 못했다: %d", static_cast<int>(status));
    return status;
}

}  // namespace brimwatch
