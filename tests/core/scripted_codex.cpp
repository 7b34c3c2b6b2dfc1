#include "scripted_codex.h"

#include <utility>

namespace brimwatch::test {

ScriptedCodex::~ScriptedCodex() {
    while (isAsking())
        answer(codexSystemError(std::errc::operation_canceled));
}

void ScriptedCodex::answer(CodexReadResult result) {
    Open* question = open_.front();
    open_.pop_front();
    question->result = std::move(result);
    question->waiting.resume();
}

QCoro::Task<CodexReadResult> ScriptedCodex::ask(std::string executable,
                                                CodexAccounts::Account account) {
    struct Enlist {
        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) const {
            open->waiting = waiting;
            codex->open_.push_back(open);
        }
        void await_resume() const {}

        ScriptedCodex* codex;
        Open* open;
    };
    questions_.push_back({std::move(executable), std::move(account)});
    if (answerAtOnce) co_return answerAtOnce(questions_.back());
    Open open;
    const Enlist enlist{this, &open};
    co_await enlist;
    co_return open.result;
}

CodexPoller::Reading codexReading(double fiveHour, double sevenDay, Instant now) {
    const std::int64_t seconds = wholeUnixSeconds(now);
    CodexPoller::Reading reading;
    reading.windows["five_hour"] = {.usedPercentage = fiveHour, .resetsAt = seconds + 2 * 3600};
    reading.windows["seven_day"] = {.usedPercentage = sevenDay, .resetsAt = seconds + 4 * 86400};
    reading.planType = "plus";
    return reading;
}

CodexReadResult codexFailure(CodexPoller::Failure::Kind kind) {
    return tl::unexpected(CodexReadFailure(CodexPoller::Failure{kind, "text of the server"}));
}

CodexReadResult codexSystemError(std::errc error) {
    return tl::unexpected(CodexReadFailure(std::make_error_code(error)));
}

}  // namespace brimwatch::test
