// The desktop program, which the command `brimwatch` becomes in its application role.

#include <unistd.h>

#include <QApplication>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/application.h"
#include "app/desktop.h"
#include "app/figures_printer.h"
#include "app/private_update_role.h"
#include "app/program_path.h"
#include "app/second_start.h"
#include "app/successor.h"
#include "platform/linux/quit_signals.h"
#include "platform/posix/ignored_signals.h"
#include "platform/posix/standard_streams.h"
#include "support/role.h"

namespace brimwatch {
namespace {

using Options = std::vector<std::string_view>;

// For the one that runs, which may be starting itself on a busy machine.
constexpr std::chrono::seconds longestWaitForFirst{10};

bool has(const Options& options, std::string_view option) {
    return std::find(options.begin(), options.end(), option) != options.end();
}

int complain(const std::string& text, int status = EXIT_FAILURE) {
    writeStandardError("brimwatch: " + text + '\n');
    return status;
}

// `--connect` does what the button of that name will do.
void connectIfAsked(const Options& options, HelperModel& model) {
    if (!has(options, "--connect")) return;
    model.connectClaude();
    if (model.failure()) writeStandardError(*model.failure() + '\n');
}

// Without a display Qt explains itself at length and dumps core.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/,
                       const QString& /*message*/) {
    if (type == QtFatalMsg) ::_exit(complain("there is no display to show anything on"));
}

// How a role ends, and what takes its place then.
struct Ending {
    int status = EXIT_SUCCESS;
    std::optional<std::string> successor;
};

// `--figures` prints what the panel and the cards show, and shows nothing itself.
Ending printFigures(int count, char** arguments, const Options& options, Application::Launch launch,
                    Application::Claim claim) {
    QCoreApplication loop(count, arguments);
    const QuitSignals quitSignals;
    Application application(std::move(launch), std::move(claim));
    const FiguresPrinter printer(application.model());
    connectIfAsked(options, application.model());
    return {.status = QCoreApplication::exec(), .successor = std::nullopt};
}

Ending runOnDesktop(int count, char** arguments, const Options& options, Application::Launch launch,
                    Application::Claim claim) {
    const Environment environment = launch.environment;
    const QtMessageHandler usual = qInstallMessageHandler(endWithoutDisplay);
    QApplication loop(count, arguments);
    qInstallMessageHandler(usual);
    QGuiApplication::setDesktopFileName(QStringLiteral("net.quillmoor.brimwatch"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Brimwatch?"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const QuitSignals quitSignals;
    Application application(std::move(launch), std::move(claim));
    connectIfAsked(options, application.model());
    Desktop desktop(application, environment);
    // Does what the button of that name will do.
    if (has(options, "--phone-link")) desktop.delegate().showPhoneLink();
    const int status = QApplication::exec();
    return {.status = status, .successor = desktop.successor()};
}

// What `claimOrGiveWay` gives. Qt takes options of its own out of the arguments, which the program
// still needs if it is the one that runs.
auto claimOrGiveWayTo(std::vector<char*> arguments, const Environment& environment) {
    int count = static_cast<int>(arguments.size()) - 1;
    const QCoreApplication loop(count, arguments.data());
    return claimOrGiveWay(environment, longestWaitForFirst);
}

bool isPrivateUpdateRole(Role role) {
    return role == Role::configurePrivateUpdates || role == Role::clearPrivateUpdates ||
           role == Role::usageFailure;
}

int updatePrivately(int count, char** arguments, Role role, const Environment& environment) {
    // Qt takes options of its own out of the arguments.
    const std::string path = role == Role::configurePrivateUpdates ? arguments[2] : "";
    const QCoreApplication loop(count, arguments);
    return runPrivateUpdateRole(role, path, environment);
}

int run(int count, char** arguments) {
    holdStandardDescriptors();
    const sigset_t defaultSignals = ignoreWriteSignals();
    const Options options(arguments + 1, arguments + count);
    const Environment environment(environ);
    const Role role = classifyArguments(options);
    if (isPrivateUpdateRole(role)) return updatePrivately(count, arguments, role, environment);
    const std::optional<std::string> executable = commandPath(arguments[0]);
    if (!executable) return complain("can't tell where it lies");

    tl::expected<std::optional<Application::Claim>, Application::Refusal> claim =
        Application::claim(environment);
    if (!claim && claim.error().reason == Application::Refusal::Reason::isRunning)
        claim = claimOrGiveWayTo({arguments, arguments + count + 1}, environment);
    if (!claim) return complain(claim.error().text);
    if (!*claim) return EXIT_SUCCESS;
    Application::Launch launch{
        .executable = *executable, .environment = environment, .defaultSignals = defaultSignals};
    const auto show = has(options, "--figures") ? printFigures : runOnDesktop;
    const Ending ending = show(count, arguments, options, std::move(launch), **std::move(claim));
    if (!ending.successor) return ending.status;
    becomeSuccessor(*ending.successor, defaultSignals);
    return complain("can't start the new version " + *ending.successor);
}

}  // namespace
}  // namespace brimwatch

int main(int count, char** arguments) {
    return brimwatch::run(count, arguments);
}
