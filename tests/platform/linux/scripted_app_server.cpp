// Does what the lines of SCRIPTED_APP_SERVER say, one after the other, and exits:
//   read            reads a line of its input and notes it
//   say TEXT        prints the text as a line
//   fill BYTES      prints that many bytes without a line feed
//   flood           prints lines until nobody reads them or it is ended
//   describe        notes its arguments, its folder and where standard error goes
//   variable NAME   notes a variable of its environment, each time that it stands there
//   signals         notes whether SIGPIPE has its default action
//   close-input, close-output
//   chatter BYTES   writes that many bytes to standard error
//   ignore-end      ignores SIGTERM
//   stop            stops itself, as SIGSTOP does
//   drain           ends half a second after SIGTERM, and not before
//   wait            waits for a signal or, in vain, for a minute
// It leaves by _exit: the leak check of a sanitized program stops the process to look at it, and
// never ends if the signal of the reader comes just then.
// What it notes goes to the file SCRIPTED_APP_SERVER_NOTES, its process number first.

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

namespace {

constexpr unsigned longestLifeSeconds = 60;

void note(const std::string& line) {
    const char* path = std::getenv("SCRIPTED_APP_SERVER_NOTES");
    if (path != nullptr) std::ofstream(path, std::ios::app) << line << '\n';
}

void describe(int count, char** arguments) {
    for (int index = 1; index < count; ++index)
        note(std::string("argument ") + arguments[index]);
    note("folder " + std::filesystem::current_path().string());
    note("error output " + std::filesystem::read_symlink("/proc/self/fd/2").string());
}

void noteVariable(const std::string& name) {
    for (const char* const* entry = environ; *entry != nullptr; ++entry) {
        if (std::string_view(*entry).starts_with(name + '=')) note(*entry);
    }
}

void noteSignals() {
    struct sigaction action {};
    ::sigaction(SIGPIPE, nullptr, &action);
    note(action.sa_handler == SIG_DFL ? "SIGPIPE by default" : "SIGPIPE ignored");
}

void noteLine() {
    std::string line;
    note(std::getline(std::cin, line) ? "read " + line : "end of input");
}

void fill(std::size_t bytes, int file) {
    const std::string piece(1U << 20U, 'x');
    while (bytes > 0) {
        const ssize_t count = ::write(file, piece.data(), std::min(bytes, piece.size()));
        if (count <= 0) ::_exit(EXIT_FAILURE);
        bytes -= static_cast<std::size_t>(count);
    }
}

[[noreturn]] void flood() {
    const std::string lines = "{\"method\":\"note\"}\n[7]\nlog\n";
    while (::write(STDOUT_FILENO, lines.data(), lines.size()) > 0) {
    }
    ::_exit(EXIT_FAILURE);
}

void drain() {
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGTERM, [](int) {
        ::usleep(500'000);
        ::_exit(EXIT_SUCCESS);
    });
}

void carryOut(const std::string& command, const std::string& operand) {
    if (command == "read") noteLine();
    if (command == "say") std::cout << operand << std::endl;
    if (command == "fill") fill(std::stoul(operand), STDOUT_FILENO);
    if (command == "flood") flood();
    if (command == "variable") noteVariable(operand);
    if (command == "signals") noteSignals();
    if (command == "close-input") ::close(STDIN_FILENO);
    if (command == "close-output") ::close(STDOUT_FILENO);
    if (command == "chatter") fill(std::stoul(operand), STDERR_FILENO);
    if (command == "ignore-end") ::signal(SIGTERM, SIG_IGN);
    if (command == "stop") static_cast<void>(::raise(SIGSTOP));
    if (command == "drain") drain();
    if (command == "wait") ::pause();
}

}  // namespace

int main(int count, char** arguments) {
    ::alarm(longestLifeSeconds);  // a test that fails leaves nothing behind
    note("process " + std::to_string(::getpid()));
    const char* script = std::getenv("SCRIPTED_APP_SERVER");
    std::istringstream lines(script == nullptr ? "" : script);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        if (line == "describe") describe(count, arguments);
        carryOut(line.substr(0, blank), blank == std::string::npos ? "" : line.substr(blank + 1));
    }
    ::_exit(EXIT_SUCCESS);
}
