// With the real program, which the desktop of a developer may have. Its account is one that nobody
// has logged in to.
#include <gtest/gtest.h>

#include <QCoroTask>
#include <QStandardPaths>

#include "codex_process_fixture.h"

namespace brimwatch {
namespace {

using test::CodexProcess;

TEST_F(CodexProcess, TheRealServerTellsThatNobodyIsLoggedIn) {
    const QString codex = QStandardPaths::findExecutable("codex");
    if (codex.isEmpty()) GTEST_SKIP() << "There is no codex on this machine.";
    environment_.set("HOME", folder_.path());
    environment_.set("PATH", qEnvironmentVariable("PATH").toStdString());
    CodexReadRequest real = request("");
    real.executable = codex.toStdString();
    EXPECT_EQ(test::failureOf(QCoro::waitFor(readCodex(real))),
              test::serverFailure("codex account authentication required to read rate limits"));
}

}  // namespace
}  // namespace brimwatch
