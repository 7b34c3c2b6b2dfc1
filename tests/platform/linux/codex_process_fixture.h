// Reads from a scripted server, with an application of their own, and what they leave behind.
#pragma once

#include <chrono>
#include <iosfwd>
#include <string>
#include <vector>

#include "harness/environment_list.h"
#include "harness/temporary_folder.h"
#include "platform/linux/application_test.h"
#include "platform/linux/codex_process.h"

namespace brimwatch::test {

// Lines for the server's script.
inline constexpr const char* greet = "read\nsay {\"id\":1,\"result\":{}}\n";
inline constexpr const char* takeQuestion = "read\nread\n";
inline constexpr const char* answer =
    R"(say {"id":2,"result":{"rateLimits":{"primary":{"usedPercent":37,"windowDurationMins":300}}}})"
    "\n";

// Also one that has ended and was not reaped.
bool hasChild();

class CodexProcess : public ApplicationTest {
  protected:
    void TearDown() override;  // expects that nothing is left behind

    CodexReadRequest request(const std::string& script);
    CodexReadResult read(const std::string& script);
    // The whole conversation, with those lines of script before the answer.
    CodexReadResult readAnswerAfter(const std::string& script);

    std::vector<std::string> notes() const;
    // The scripted server's, once it has noted it.
    pid_t server() const;

    TemporaryFolder folder_;
    EnvironmentList environment_ = {{"PATH", "/usr/bin:/bin"}};
    std::chrono::milliseconds timeOut_{20'000};
};

CodexReadFailure failureOf(const CodexReadResult& result);
bool isReading(const CodexReadResult& result);
CodexReadFailure serverFailure(const std::string& message);
CodexReadFailure pollerFailure(CodexPoller::Failure::Kind kind);
CodexReadFailure systemFailure(int number);

}  // namespace brimwatch::test

namespace brimwatch {

void PrintTo(const CodexReadFailure& failure, std::ostream* stream);

}  // namespace brimwatch
