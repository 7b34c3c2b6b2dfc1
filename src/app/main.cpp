// The desktop program, which the command `brimwatch` becomes in its application role. It has no
// windows yet: it prints its figures until it is interrupted.

#include <unistd.h>

#include <QCoreApplication>
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "app/application.h"
#include "app/figures_printer.h"
#include "app/program_path.h"
#include "platform/linux/quit_signals.h"
#include "platform/posix/ignored_signals.h"
#include "platform/posix/standard_streams.h"

namespace brimwatch {
namespace {

constexpr int exitPrivateUpdateFailure = 2;

int complain(const std::string& text, int status) {
    writeStandardError(text + '\n');
    return status;
}

bool isPrivateUpdateCommand(const std::vector<std::string_view>& arguments) {
    return std::any_of(arguments.begin(), arguments.end(), [](std::string_view argument) {
        return argument == "--configure-private-updates" || argument == "--clear-private-updates";
    });
}

// `--connect` does what the button of that name will do.
void connect(HelperModel& model) {
    model.connectClaude();
    if (model.failure()) writeStandardError(*model.failure() + '\n');
}

int run(int count, char** arguments) {
    holdStandardDescriptors();
    const sigset_t defaultSignals = ignoreWriteSignals();
    const std::vector<std::string_view> options(arguments + 1, arguments + count);
    if (isPrivateUpdateCommand(options)) {
        return complain("Private update configuration failed.", exitPrivateUpdateFailure);
    }
    const std::optional<std::string> executable = commandPath(arguments[0]);
    if (!executable) return complain("brimwatch: can't tell where it lies", EXIT_FAILURE);

    QCoreApplication loop(count, arguments);
    const QuitSignals quitSignals;
    auto application = Application::start({.executable = *executable,
                                           .environment = Environment(environ),
                                           .defaultSignals = defaultSignals});
    if (!application) return complain("brimwatch: " + application.error(), EXIT_FAILURE);
    HelperModel& model = (*application)->model();
    const FiguresPrinter printer(model);
    if (std::find(options.begin(), options.end(), "--connect") != options.end()) connect(model);
    return QCoreApplication::exec();
}

}  // namespace
}  // namespace brimwatch

int main(int count, char** arguments) {
    return brimwatch::run(count, arguments);
}
