#include "codex/codex_conversation.h"

#include <utility>

#include "support/json_reader.h"
#include "support/json_writer.h"

namespace brimwatch {
namespace {

using Failure = CodexPoller::Failure;

constexpr std::int64_t greetingId = 1;
constexpr std::int64_t questionId = 2;

std::string line(JsonObject message) {
    return writeJson(std::move(message), JsonLayout::compact) + '\n';
}

std::string question() {
    JsonObject parameters;
    parameters.set("excludeResetCreditDetails", true);
    JsonObject message;
    message.set("id", JsonNumber::fromInteger(questionId));
    message.set("method", "account/rateLimits/read");
    message.set("params", std::move(parameters));
    return line(std::move(message));
}

std::string initialized() {
    JsonObject message;
    message.set("method", "initialized");
    return line(std::move(message));
}

std::optional<std::int64_t> idOf(const JsonObject& message) {
    const JsonValue* id = message.find("id");
    if (id == nullptr || id->number() == nullptr) return std::nullopt;
    return id->number()->toInteger();
}

// The failure that a message tells of, if it does.
std::optional<Failure> errorOf(const JsonObject& message) {
    const JsonValue* error = message.find("error");
    if (error == nullptr || error->object() == nullptr) return std::nullopt;
    const JsonValue* text = error->member("message");
    const bool isText = text != nullptr && text->string() != nullptr;
    return Failure{Failure::Kind::server, isText ? *text->string() : "codex app-server 오류"};
}

}  // namespace

std::string CodexConversation::greeting() {
    JsonObject client;
    client.set("name", "brimwatch");
    client.set("title", "Brimwatch?");
    client.set("version", "1.0");
    JsonObject parameters;
    parameters.set("clientInfo", std::move(client));
    JsonObject message;
    message.set("id", JsonNumber::fromInteger(greetingId));
    message.set("method", "initialize");
    message.set("params", std::move(parameters));
    return line(std::move(message));
}

std::string CodexConversation::receive(std::string_view bytes) {
    std::string reply;
    while (!outcome_ && !bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        unfinishedLine_ += bytes.substr(0, end);
        if (unfinishedLine_.size() > longestLineBytes) {
            fail({Failure::Kind::server, "codex app-server 오류"});
        } else if (end != std::string_view::npos) {
            reply += receiveLine(std::exchange(unfinishedLine_, {}));
        }
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
    return reply;
}

void CodexConversation::receiveEnd() {
    if (!outcome_) static_cast<void>(receiveLine(std::exchange(unfinishedLine_, {})));
    if (!outcome_) fail({Failure::Kind::server, "codex app-server가 끝났어요"});
}

std::string CodexConversation::receiveLine(std::string_view text) {
    const std::optional<JsonObject> message = parseJsonMembers(text, {"id", "error", "result"});
    const std::optional<std::int64_t> id = message ? idOf(*message) : std::nullopt;
    if (!id) return {};
    if (std::optional<Failure> error = errorOf(*message)) {
        fail(*std::move(error));
    } else if (*id == greetingId && !asked_) {
        asked_ = true;
        return initialized() + question();
    } else if (*id == questionId) {
        finish(*message);
    }
    return {};
}

void CodexConversation::finish(const JsonObject& reply) {
    const JsonValue* result = reply.find("result");
    const bool hasResult = result != nullptr && result->object() != nullptr;
    CodexPoller::Reading reading =
        CodexPoller::Reading::fromResult(hasResult ? *result->object() : JsonObject());
    if (reading.windows.empty()) {
        fail({Failure::Kind::noLimits, {}});
    } else {
        outcome_ = std::move(reading);
    }
}

void CodexConversation::fail(Failure failure) {
    outcome_ = tl::unexpected(std::move(failure));
}

}  // namespace brimwatch
