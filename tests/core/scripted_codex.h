// Codex as the model sees it: a place where it may be found, and questions that a test answers when
// it likes.
#pragma once

#include <coroutine>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/helper_model.h"

namespace brimwatch::test {

class ScriptedCodex {
  public:
    struct Question {
        std::string executable;
        CodexAccounts::Account account;
    };

    ScriptedCodex() = default;
    ScriptedCodex(const ScriptedCodex&) = delete;
    ScriptedCodex& operator=(const ScriptedCodex&) = delete;
    ~ScriptedCodex();  // answers what is open as the end of the program does

    HelperModel::ReadCodex reader() {
        return [this](std::string executable, CodexAccounts::Account account) {
            return ask(std::move(executable), std::move(account));
        };
    }
    HelperModel::FindCodex finder() {
        return [this] { return installed; };
    }

    // All questions so far, the answered ones included.
    const std::vector<Question>& questions() const { return questions_; }
    void forgetQuestions() { questions_.clear(); }
    bool isAsking() const { return !open_.empty(); }
    std::size_t openCount() const { return open_.size(); }
    // Answers the oldest open question.
    void answer(CodexReadResult result);

    std::optional<std::string> installed = "/usr/bin/codex";
    // If set, every question is answered at once.
    std::function<CodexReadResult(const Question&)> answerAtOnce;

  private:
    struct Open {
        std::coroutine_handle<> waiting;
        CodexReadResult result;
    };

    QCoro::Task<CodexReadResult> ask(std::string executable, CodexAccounts::Account account);

    std::vector<Question> questions_;
    std::deque<Open*> open_;
};

// A reading with both windows, used to those percentages, reset in two hours and in four days.
CodexPoller::Reading codexReading(double fiveHour, double sevenDay, Instant now);
CodexReadResult codexFailure(CodexPoller::Failure::Kind kind);
CodexReadResult codexSystemError(std::errc error);

}  // namespace brimwatch::test
