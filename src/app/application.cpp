#include "app/application.h"

#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include "platform/linux/boot_sleep.h"
#include "platform/linux/codex_process.h"
#include "platform/posix/executable_path.h"
#include "platform/posix/wall_clock.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::chrono::seconds codexTimeOut{30};

// As the environment names it for times; ICU takes its place where it does not.
std::string timeLocale(const Environment& environment) {
    for (const std::string_view name : {"LC_ALL", "LC_TIME", "LANG"}) {
        const std::optional<std::string_view> value = environment.value(name);
        if (value && !value->empty()) return std::string(*value);
    }
    return {};
}

}  // namespace

tl::expected<Application::Folders, std::string> Application::findFolders(Environment environment) {
    PosixFileSystem files;
    const std::uint32_t user = ::getuid();
    std::optional<std::string> home = homeFolder(environment, files, user);
    std::optional<std::string> settings = settingsFile(environment, files, user);
    std::optional<std::string> state = stateFolder(environment, files, user);
    if (!home || !settings || !state) return tl::unexpected(std::string("there is no home folder"));
    return Folders{*std::move(home), *std::move(settings), *std::move(state)};
}

tl::expected<std::unique_ptr<Application>, std::string> Application::start(Launch launch) {
    const tl::expected<Folders, std::string> folders = findFolders(launch.environment);
    if (!folders) return tl::unexpected(folders.error());
    FileResult<std::optional<InstanceLock>> lock = InstanceLock::take(folders->state);
    if (!lock) {
        return tl::unexpected("can't use the folder " + folders->state + ": " +
                              lock.error().message());
    }
    if (!*lock) return tl::unexpected(std::string("it is running already"));
    return std::unique_ptr<Application>(
        new Application(std::move(launch), *folders, **std::move(lock)));
}

Application::Application(Launch launch, const Folders& folders, InstanceLock lock)
    : launch_(std::move(launch)),
      lock_(std::move(lock)),
      store_(files_, folders.settingsFile, folders.state),
      limitsChanged_(launch_.environment),
      loginItem_(files_, autostartSession(launch_.environment, files_, ::getuid()),
                 launch_.executable, isExecutableFile),
      agentStopper_(launch_.environment),
      model_(surroundings(folders.home)) {}

HelperModel::Surroundings Application::surroundings(const std::string& home) {
    return {.defaults = store_,
            .files = files_,
            .home = home,
            .commandEnvironment = {.executable = launch_.executable,
                                   .installedCandidates = installedCandidates(home),
                                   .rejectDevelopmentLocations = true,
                                   .isExecutable = isExecutableFile},
            .codexEnvironment = launch_.environment,
            .locale = timeLocale(launch_.environment),
            .now = wallClock,
            .sleep = sleepFor,
            .pause = [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); },
            .readCodex =
                [this](std::string executable, CodexAccounts::Account account) {
                    return readCodex({.executable = std::move(executable),
                                      .accountFolder = std::move(account.directory),
                                      .timeOut = codexTimeOut,
                                      .environment = launch_.environment,
                                      .defaultSignals = launch_.defaultSignals});
                },
            .findCodex = {},
            .systemServices = HelperModel::SystemServices{folderWatch_, limitsChanged_, loginItem_,
                                                          agentStopper_}};
}

}  // namespace brimwatch
