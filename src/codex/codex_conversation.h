// The conversation with `codex app-server`, as a machine: bytes of the server in, bytes for the
// server and an outcome out. It starts nothing, waits for nothing and knows no time.
//
// Both sides write one compact JSON object a line. The server is greeted; once it has answered, it
// is asked for the rate limits; its answer, an error or the end of its output is the outcome. Lines
// that are no answer (notifications, log lines) are passed over.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "codex/codex_poller.h"

namespace brimwatch {

class CodexConversation {
  public:
    using Outcome = tl::expected<CodexPoller::Reading, CodexPoller::Failure>;

    // A longer line is no answer of a server in its right mind and ends the conversation.
    static constexpr std::size_t longestLineBytes = 8U << 20U;

    // What to send first.
    static std::string greeting();

    // Takes what the server wrote, in pieces of any size; gives what to send in return, which is
    // mostly nothing. Aborts on a reset time beyond 64 bits, as `CodexPoller::windows` does.
    std::string receive(std::string_view bytes);

    // The server's output has ended.
    void receiveEnd();

    // A reading has at least one window. Once there, it stays.
    const std::optional<Outcome>& outcome() const { return outcome_; }

  private:
    std::string receiveLine(std::string_view text);
    void finish(const JsonObject& reply);
    void fail(CodexPoller::Failure failure);

    std::string unfinishedLine_;
    bool asked_ = false;
    std::optional<Outcome> outcome_;
};

}  // namespace brimwatch
