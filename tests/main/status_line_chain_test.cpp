// The former status line of the user, run by real runs of the command.

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "harness/random.h"
#include "main/status_line_process.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;

class StatusLineChain : public StatusLineProcess {
  protected:
    // Orphans come to the test, so that none can hide.
    void SetUp() override { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
    void TearDown() override { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }

    test::ProcessRequest chained(const std::string& command, const std::string& input) {
        test::ProcessRequest chained = request(input);
        chained.environment.set("BRIMWATCH_NEXT_STATUSLINE", command);
        return chained;
    }

    static bool noChildIsLeft() {
        return test::eventually([] {
            pid_t reaped = 0;
            while ((reaped = ::waitpid(-1, nullptr, WNOHANG)) > 0) {
            }
            return reaped < 0 && errno == ECHILD;
        });
    }
};

TEST_F(StatusLineChain, ItsOutputTakesThePlaceOfTheLine) {
    EXPECT_EQ(run(chained("printf 'one\\ntwo\\n\\n'", statusLineDocument(10))), "one\ntwo\n");
    EXPECT_EQ(run(chained("exit 1", statusLineDocument(10))), "\n");
    EXPECT_TRUE(test::exists(limitsPath()));
}

TEST_F(StatusLineChain, GetsTheInputExactly) {
    const std::string input("{\xFF\0\n\n", 5);
    EXPECT_EQ(run(chained("od -An -tx1", input)), " 7b ff 00 0a 0a\n");
}

TEST_F(StatusLineChain, EchoesADocumentOfManyMegabytes) {
    const std::string document =
        statusLineDocument(10, "\"x\":\"" + std::string(10'000'000, 'y') + "\",");
    EXPECT_EQ(run(chained("cat", document)), document);
    EXPECT_EQ(run(chained("echo unread", document)), "unread\n");
}

TEST_F(StatusLineChain, InheritsTheEnvironmentUnchanged) {
    const std::string command = "env | grep -v -e ^_= -e ^PWD= -e ^OLDPWD= -e ^SHLVL= | sort";
    EXPECT_EQ(run(chained(command, "")), "BRIMWATCH_NEXT_STATUSLINE=" + command +
                                             "\nHOME=" + folder_.path() + "\nPATH=/usr/bin:/bin\n");
}

TEST_F(StatusLineChain, HasOnlyItsThreeStandardStreams) {
    EXPECT_EQ(run(chained("ls /proc/self/fd | tr '\\n' ' '; readlink /proc/self/fd/2", "")),
              "0 1 2 3 /dev/null\n");  // the fourth is the folder that ls reads
}

TEST_F(StatusLineChain, EndedByASignalTheOwnLineIsPrinted) {
    EXPECT_EQ(run(chained("echo x; kill $$", statusLineDocument(10))), "5시간 90% 남음\n");
}

TEST_F(StatusLineChain, PrintingSomethingElseThanUtf8TheOwnLineIsPrinted) {
    EXPECT_EQ(run(chained("printf '\\377'", statusLineDocument(10))), "5시간 90% 남음\n");
}

TEST_F(StatusLineChain, AfterFiveSecondsItIsTerminatedAndTheOwnLineIsPrinted) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run(chained("echo x; exec sleep 60", statusLineDocument(10))), "5시간 90% 남음\n");
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds(4900));
    EXPECT_LT(elapsed, std::chrono::seconds(40));
    EXPECT_TRUE(noChildIsLeft());
}

TEST_F(StatusLineChain, LeadingBackToTheCommandEndsAfterOneRound) {
    const std::string self =
        std::string("'") + BRIMWATCH_COMMAND + "' --statusline --account inner";
    EXPECT_EQ(run(chained(self, statusLineDocument(10))), "5시간 90% 남음\n");
    EXPECT_TRUE(test::exists(limitsPath("inner")));
}

TEST_F(StatusLineChain, LeadingBackThroughScriptsEndsToo) {
    test::writeFile(folder_.file("line.sh"),
                    "sh -c \"sh -c \\\"'" BRIMWATCH_COMMAND "' --statusline; true\\\"; true\"\n");
    EXPECT_EQ(run(chained("sh '" + folder_.file("line.sh") + "'; true", statusLineDocument(10))),
              "5시간 90% 남음\n");
}

TEST_F(StatusLineChain, TwoCopiesThatLeadToEachOtherEnd) {
    const std::string copy = folder_.file("copy");
    fs::copy_file(BRIMWATCH_COMMAND, copy);
    EXPECT_EQ(run(chained("'" + copy + "' --statusline", statusLineDocument(10))),
              "5시간 90% 남음\n");
    EXPECT_TRUE(noChildIsLeft());
}

TEST_F(StatusLineChain, LeadingBackFromTheBackgroundEndsToo) {
    for (const char* start : {"", "setsid "}) {
        const std::string command = "echo x >> '" + folder_.file("rounds") + "'; (" + start +
                                    "'" BRIMWATCH_COMMAND "' --statusline --account inner &)";
        run(chained(command, statusLineDocument(10)));
        EXPECT_TRUE(noChildIsLeft());
        EXPECT_EQ(test::readFile(folder_.file("rounds")), "x\n");
        fs::remove(folder_.file("rounds"));
    }
}

// A script that starts itself until it stands so many shells deep, and then leads back.
TEST_F(StatusLineChain, EightAncestorsAreLookedAtAndNoMore) {
    const std::string script = folder_.file("nest.sh");
    const std::string rounds = folder_.file("rounds");
    test::writeFile(script, "if [ $1 -gt 1 ]; then sh '" + script + "' $(($1 - 1)); exit; fi\n" +
                                "echo x >> '" + rounds + "'\n" + "[ $(wc -l < '" + rounds +
                                "') -gt 3 ] && exit\n" +
                                "'" BRIMWATCH_COMMAND "' --statusline; true\n");
    // The shell that runs the command line stands between the two as well.
    const auto roundsThroughShells = [&](int shells) {
        fs::remove(rounds);
        run(chained("sh '" + script + "' " + std::to_string(shells - 1) + "; true",
                    statusLineDocument(10)));
        const std::string text = test::readFile(rounds);
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(roundsThroughShells(7), 1);
    EXPECT_GT(roundsThroughShells(8), 1);
}

TEST_F(StatusLineChain, EndedWhileItRunsTheFiguresAreStoredAlready) {
    test::Process process(
        chained("echo x > '" + folder_.file("runs") + "'; sleep 60", statusLineDocument(77)));
    ASSERT_TRUE(test::eventually([this] { return test::exists(folder_.file("runs")); }));
    process.signal(SIGTERM);
    EXPECT_TRUE(process.wait().endedBySignal(SIGTERM));
    EXPECT_EQ(
        LimitsFile::decode(test::readFile(limitsPath()))->windows.at("five_hour").usedPercentage,
        77);
    EXPECT_TRUE(noChildIsLeft());
}

TEST_F(StatusLineChain, AnAncestorOutsideStatusLineModeDoesNotStopIt) {
    // The shell between them has another executable; the outer process is not a status line.
    test::ProcessRequest outer = chained("echo next", statusLineDocument(10));
    outer.program = "/bin/sh";
    outer.arguments = {"-c", "'" BRIMWATCH_COMMAND "' --statusline; true"};
    EXPECT_EQ(run(outer), "next\n");
}

// Claude Code ends a run with SIGTERM as soon as a newer one is due.
TEST_F(StatusLineChain, EndedAtAnyMomentItLeavesWholeFilesAFreeLockAndNoChild) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    run(request(statusLineDocument(0)));
    for (int round = 1; round <= 200; ++round) {
        test::Process process(chained("sleep 30 | sleep 30", statusLineDocument(0.3 * round)));
        std::this_thread::sleep_for(std::chrono::microseconds(random.below(6000)));
        process.signal(SIGTERM);
        EXPECT_TRUE(process.wait().endedBySignal(SIGTERM));
        ASSERT_TRUE(LimitsFile::decode(test::readFile(limitsPath())));
    }
    EXPECT_TRUE(noChildIsLeft());
    run(request(statusLineDocument(99)));
    EXPECT_TRUE(leftovers().empty());
}

}  // namespace
}  // namespace brimwatch
