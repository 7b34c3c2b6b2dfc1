#include "codex_process_fixture.h"

#include <sys/wait.h>

#include <QCoroTask>
#include <ostream>
#include <sstream>

namespace brimwatch::test {

bool hasChild() {
    siginfo_t information{};
    return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == 0;
}

void CodexProcess::TearDown() {
    if (application_) {
        EXPECT_TRUE(eventually([] { return !hasChild(); }));
    }
    ApplicationTest::TearDown();
    EXPECT_FALSE(hasChild());
}

CodexReadRequest CodexProcess::request(const std::string& script) {
    environment_.set("SCRIPTED_APP_SERVER", script);
    environment_.set("SCRIPTED_APP_SERVER_NOTES", folder_.file("notes"));
    return {.executable = BRIMWATCH_SCRIPTED_APP_SERVER,
            .accountFolder = folder_.path(),
            .timeOut = timeOut_,
            .environment = environment_.view()};
}

CodexReadResult CodexProcess::read(const std::string& script) {
    return QCoro::waitFor(readCodex(request(script)));
}

CodexReadResult CodexProcess::readAnswerAfter(const std::string& script) {
    return read(greet + (takeQuestion + script) + answer + "read\n");
}

std::vector<std::string> CodexProcess::notes() const {
    std::vector<std::string> lines;
    if (!exists(folder_.file("notes"))) return lines;
    std::istringstream text(readFile(folder_.file("notes")));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

pid_t CodexProcess::server() const {
    EXPECT_TRUE(eventually([&] { return !notes().empty(); }));
    return notes().empty() ? -1 : std::stoi(notes().front().substr(std::string("process ").size()));
}

CodexReadFailure failureOf(const CodexReadResult& result) {
    EXPECT_FALSE(result.has_value());
    return result ? serverFailure("(no failure)") : result.error();
}

bool isReading(const CodexReadResult& result) {
    return result && result->windows == LimitsFile::Windows{{"five_hour", {37, std::nullopt}}};
}

CodexReadFailure serverFailure(const std::string& message) {
    return CodexPoller::Failure{CodexPoller::Failure::Kind::server, message};
}

CodexReadFailure pollerFailure(CodexPoller::Failure::Kind kind) {
    return CodexPoller::Failure{kind, {}};
}

CodexReadFailure systemFailure(int number) {
    return std::error_code(number, std::generic_category());
}

}  // namespace brimwatch::test

namespace brimwatch {

void PrintTo(const CodexReadFailure& failure, std::ostream* stream) {
    if (const auto* error = std::get_if<std::error_code>(&failure)) {
        *stream << error->message();
    } else {
        const auto& told = std::get<CodexPoller::Failure>(failure);
        *stream << "failure " << static_cast<int>(told.kind) << " " << told.message;
    }
}

}  // namespace brimwatch
