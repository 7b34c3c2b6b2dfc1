// What one run asks of the system. Times are for the benchmark; these figures repeat exactly.

#include <sys/syscall.h>

#include <algorithm>

#include "main/status_line_process.h"
#include "main/traced_process.h"

namespace brimwatch {
namespace {

class StatusLineCost : public StatusLineProcess {
  protected:
    void SetUp() override {
#ifdef BRIMWATCH_SANITIZED
        GTEST_SKIP() << "a sanitizer asks for more than the command does";
#endif
    }

    test::TracedRun trace(const std::string& input) {
        return test::traceProcess(request(input));
    }

    static long count(const test::TracedRun& run, long number) {
        return std::count(run.systemCalls.begin(), run.systemCalls.end(), number);
    }

    std::string document_ = test::testData("claude-2.1.329-after-response-with-rate-limits.json");
};

TEST_F(StatusLineCost, AnUnchangedRunTakesAtMostFortySystemCallsAndWritesNoFile) {
    run(request(statusLineDocument(10)));
    const auto before = std::filesystem::last_write_time(limits_);
    const std::string stored = test::readFile(limitsPath());
    const test::TracedRun traced = trace(statusLineDocument(10));
    if (!traced.traced) GTEST_SKIP() << "this place allows no tracing";
    EXPECT_GT(traced.systemCalls.size(), 10U);
    EXPECT_LE(traced.systemCalls.size(), 40U);
    EXPECT_EQ(count(traced, SYS_write), 1);
    for (const long forbidden : {SYS_rename, SYS_unlink, SYS_socket, SYS_clone, SYS_vfork, SYS_fork,
                                 SYS_fsync, SYS_getdents64}) {
        EXPECT_EQ(count(traced, forbidden), 0) << forbidden;
    }
    EXPECT_EQ(std::filesystem::last_write_time(limits_), before);
    EXPECT_EQ(test::readFile(limitsPath()), stored);
}

TEST_F(StatusLineCost, NoRunWaitsForTheDisk) {
    const test::TracedRun traced = trace(document_);
    if (!traced.traced) GTEST_SKIP() << "this place allows no tracing";
    EXPECT_EQ(count(traced, SYS_rename), 1);
    for (const long number : {SYS_fsync, SYS_fdatasync, SYS_sync, SYS_syncfs}) {
        EXPECT_EQ(count(traced, number), 0);
    }
}

TEST_F(StatusLineCost, ARunStaysBelowTwoMebibytesOfResidentMemory) {
    for (int round = 0; round < 2; ++round) {
        const test::TracedRun traced = trace(document_);
        if (!traced.traced) GTEST_SKIP() << "this place allows no tracing";
        EXPECT_GT(traced.peakResidentKilobytes, 100);
        EXPECT_LT(traced.peakResidentKilobytes, 2048);
    }
}

}  // namespace
}  // namespace brimwatch
