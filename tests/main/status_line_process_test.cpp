// One run of the status line as a process: good input, bad input, odd streams, full disks.

#include "main/status_line_process.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>

namespace brimwatch {
namespace {

namespace fs = std::filesystem;

TEST_F(StatusLineProcess, PrintsALineAndStoresTheFigures) {
    EXPECT_EQ(run(request(statusLineDocument(41.26))), "5시간 58% 남음\n");
    const auto stored = LimitsFile::decode(test::readFile(limitsPath()));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->windows.at("five_hour").usedPercentage, 41.3);
    EXPECT_LE(std::abs(stored->updatedAt - std::time(nullptr)), 60);
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(StatusLineProcess, TakesEveryCapturedDocument) {
    for (const auto& entry : fs::directory_iterator(BRIMWATCH_TEST_DATA)) {
        if (!entry.path().filename().string().starts_with("claude-2")) continue;
        const std::string output = run(request(test::readFile(entry.path())));
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << entry.path();
    }
}

TEST_F(StatusLineProcess, PrintsAnEmptyLineForInputThatIsNoDocument) {
    for (const std::string& input :
         {std::string(), std::string("x"), std::string("\0\xFF", 2), std::string(1'000'000, '['),
          std::string("{\"rate_limits\":")}) {
        EXPECT_EQ(run(request(input)), "\n");
    }
    EXPECT_FALSE(test::exists(limits_));
}

TEST_F(StatusLineProcess, TakesADocumentOfManyMegabytes) {
    const std::string more = "\"x\":\"" + std::string(20'000'000, 'y') + "\",";
    EXPECT_EQ(run(request(statusLineDocument(10, more))), "5시간 90% 남음\n");
}

TEST_F(StatusLineProcess, ReadsFromASocketPairAsClaudeCodeGivesIt) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const std::string document = statusLineDocument(10);
    ASSERT_EQ(::write(ends[0], document.data(), document.size()),
              static_cast<ssize_t>(document.size()));
    ::shutdown(ends[0], SHUT_WR);
    test::ProcessRequest fromSocket = request("");
    fromSocket.prepare = [&] { ::dup2(ends[1], STDIN_FILENO); };
    EXPECT_EQ(run(fromSocket), "5시간 90% 남음\n");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(StatusLineProcess, WaitsForInputThatIsNotThereYet) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    test::ProcessRequest fromPipe = request("");
    fromPipe.prepare = [&] { ::dup2(ends[0], STDIN_FILENO); };
    test::Process process(fromPipe);
    const std::string document = statusLineDocument(10);
    for (const char character : document) {
        ASSERT_EQ(::write(ends[1], &character, 1), 1);
        if (character == ',') ::usleep(2000);
    }
    ::close(ends[1]);
    const test::ProcessResult result = process.wait();
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_EQ(result.output, "5시간 90% 남음\n");
    ::close(ends[0]);
}

TEST_F(StatusLineProcess, SurvivesEveryStandardStreamBeingClosed) {
    for (int closed = 0; closed < 8; ++closed) {
        test::ProcessRequest odd = request(statusLineDocument(closed));
        odd.environment.set("BRIMWATCH_NEXT_STATUSLINE", "cat >/dev/null; echo next");
        odd.prepare = [closed] {
            for (int stream = 0; stream < 3; ++stream) {
                if ((closed >> stream & 1) != 0) ::close(stream);
            }
        };
        const bool prints = (closed >> STDOUT_FILENO & 1) == 0;
        EXPECT_EQ(run(odd), prints ? "next\n" : "") << closed;
        EXPECT_EQ(fs::exists(limits_ + "/.lock") ? test::readFile(limits_ + "/.lock") : "", "");
    }
    EXPECT_EQ(
        LimitsFile::decode(test::readFile(limitsPath()))->windows.at("five_hour").usedPercentage,
        6);
}

TEST_F(StatusLineProcess, SurvivesAReaderThatWentAway) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    ::close(ends[0]);
    test::ProcessRequest toNobody = request(statusLineDocument(10));
    toNobody.prepare = [&] { ::dup2(ends[1], STDOUT_FILENO); };
    EXPECT_EQ(run(toNobody), "");
    EXPECT_TRUE(test::exists(limitsPath()));
    ::close(ends[1]);
}

TEST_F(StatusLineProcess, AResetTimeBeyondSixtyFourBitsAbortsAndLeavesTheFilesAlone) {
    run(request(statusLineDocument(10)));
    const std::string stored = test::readFile(limitsPath());
    const test::ProcessResult result = test::runProcess(request(
        R"({"rate_limits":{"five_hour":{"used_percentage":20,"resets_at":9223372036854775808}}})"));
    EXPECT_TRUE(result.endedBySignal(SIGABRT));
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(test::readFile(limitsPath()), stored);
    EXPECT_TRUE(leftovers().empty());
}

#ifndef BRIMWATCH_SANITIZED
TEST_F(StatusLineProcess, PrintsALineWhenMemoryRunsOut) {
    test::ProcessRequest starved = request(std::string(60'000'000, ' '));
    starved.prepare = [] {
        const rlimit limit{30'000'000, 30'000'000};
        ::setrlimit(RLIMIT_AS, &limit);
    };
    EXPECT_EQ(run(starved), "\n");
}
#endif

TEST_F(StatusLineProcess, TellsAListenerOfAChangeAndOfNothingElse) {
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder_.file("net.quillmoor.brimwatch.limitsChanged");
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    environment_.set("XDG_RUNTIME_DIR", folder_.path());
    char byte = 0;
    run(request(statusLineDocument(10)));
    EXPECT_EQ(::recv(socket, &byte, 1, 0), 0);
    EXPECT_EQ(::recv(socket, &byte, 1, 0), -1);
    run(request(statusLineDocument(10)));
    run(request(statusLineDocument(5)));
    run(request("{}"));
    EXPECT_EQ(::recv(socket, &byte, 1, 0), -1);
    run(request(statusLineDocument(20)));
    EXPECT_EQ(::recv(socket, &byte, 1, 0), 0);
    ::close(socket);
}

TEST_F(StatusLineProcess, AFileSizeLimitCostsTheFileButNotTheLine) {
    run(request(statusLineDocument(10)));
    const std::string stored = test::readFile(limitsPath());
    for (const rlim_t size : {0, 1, 100}) {
        test::ProcessRequest limited = request(statusLineDocument(20));
        // The output of the run is a file too, so it goes to a pipe here.
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        limited.prepare = [&] {
            ::dup2(ends[1], STDOUT_FILENO);
            const rlimit limit{size, size};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        };
        run(limited);
        char line[100];
        const ssize_t count = ::read(ends[0], line, sizeof line);
        EXPECT_EQ(std::string(line, static_cast<std::size_t>(std::max<ssize_t>(count, 0))),
                  "5시간 80% 남음\n");
        EXPECT_EQ(test::readFile(limitsPath()), stored);
        EXPECT_TRUE(leftovers().empty());
        ::close(ends[0]);
        ::close(ends[1]);
    }
}

// Runs of the command in a mount namespace of their own, which only root may make.
class StatusLineOnAnotherDisk : public StatusLineProcess {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "only root can mount a small disk";
        const test::ProcessResult probe = script("true");
        if (probe.exitedWith(126)) GTEST_SKIP() << "this place allows no mount namespace";
    }

    // The script runs with a small disk mounted at $HOME.
    test::ProcessResult script(const std::string& text) {
        const std::string home = folder_.path();
        test::ProcessRequest request{.program = "/bin/sh",
                                     .arguments = {"-c", text},
                                     .environment = environment_,
                                     .input = "",
                                     .prepare = nullptr};
        request.environment.set("BRIMWATCH", BRIMWATCH_COMMAND);
        request.environment.set("OLD", statusLineDocument(10));
        request.environment.set("NEW", statusLineDocument(20));
        request.prepare = [home] {
            const bool mounted =
                ::unshare(CLONE_NEWNS) == 0 &&
                ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                ::mount("none", home.c_str(), "tmpfs", 0, "size=64k") == 0;
            if (!mounted) ::_exit(126);
        };
        return test::runProcess(request);
    }
};

constexpr const char* runScript = R"(
    run() { printf %s "$1" | "$BRIMWATCH" --statusline --account work || echo "failed: $?"; }
    show() { grep used_percentage "$HOME/.brimwatch/limits/claude-work.json"; }
    leftovers() { ls -A "$HOME/.brimwatch/limits" | grep -v -e '^\.lock$' -e '^claude-work\.json$'; }
)";

TEST_F(StatusLineOnAnotherDisk, AFullDiskKeepsTheStoredFileAndTheLine) {
    const test::ProcessResult result = script(std::string(runScript) + R"(
        run "$OLD"
        cat /dev/zero > "$HOME/filler" 2>/dev/null
        run "$NEW"
        show; leftovers
        rm "$HOME/filler"
        run "$NEW"
        show; leftovers)");
    EXPECT_EQ(result.output,
              "5시간 90% 남음\n5시간 80% 남음\n      \"used_percentage\": 10\n"
              "5시간 80% 남음\n      \"used_percentage\": 20\n");
    EXPECT_EQ(result.errorOutput, "");
}

TEST_F(StatusLineOnAnotherDisk, AReadOnlyFolderKeepsTheStoredFileAndTheLine) {
    const test::ProcessResult result = script(std::string(runScript) + R"(
        run "$OLD"
        mount -o remount,ro "$HOME"
        run "$NEW"
        show; leftovers)");
    EXPECT_EQ(result.output, "5시간 90% 남음\n5시간 80% 남음\n      \"used_percentage\": 10\n");
    EXPECT_EQ(result.errorOutput, "");
}

TEST_F(StatusLineOnAnotherDisk, WithoutAShellTheFormerStatusLineCountsAsFailed) {
    const test::ProcessResult result = script(std::string(runScript) + R"(
        export BRIMWATCH_NEXT_STATUSLINE='echo next'
        mount --bind /dev/null /bin/sh
        run "$OLD")");
    EXPECT_EQ(result.output, "5시간 90% 남음\n");
    EXPECT_EQ(result.errorOutput, "");
}

}  // namespace
}  // namespace brimwatch
