#include "app/application.h"

#include <unistd.h>

#include <QDesktopServices>
#include <chrono>
#include <thread>
#include <utility>

#include "app/program_path.h"
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

std::optional<Application::Folders> findFolders(const Environment& environment) {
    PosixFileSystem files;
    const std::uint32_t user = ::getuid();
    std::optional<std::string> home = homeFolder(environment, files, user);
    std::optional<std::string> settings = settingsFile(environment, files, user);
    std::optional<std::string> state = stateFolder(environment, files, user);
    if (!home || !settings || !state) return std::nullopt;
    return Application::Folders{*std::move(home), *std::move(settings), *std::move(state)};
}

tl::unexpected<Application::Refusal> refused(Application::Refusal::Reason reason,
                                             std::string text) {
    return tl::unexpected(Application::Refusal{reason, std::move(text)});
}

}  // namespace

tl::expected<Application::Claim, Application::Refusal> Application::claim(Environment environment) {
    const std::optional<Folders> folders = findFolders(environment);
    if (!folders) return refused(Refusal::Reason::system, "there is no home folder");
    FileResult<std::optional<InstanceLock>> lock = InstanceLock::take(folders->state);
    if (!lock) {
        return refused(Refusal::Reason::system,
                       "can't use the folder " + folders->state + ": " + lock.error().message());
    }
    if (!*lock) return refused(Refusal::Reason::isRunning, "it is running already");
    return Claim{*folders, **std::move(lock)};
}

Application::Application(Launch launch, Claim claim)
    : launch_(std::move(launch)),
      locale_(timeLocale(launch_.environment)),
      stateFolder_(claim.folders.state),
      lock_(std::move(claim.lock)),
      store_(files_, claim.folders.settingsFile, claim.folders.state),
      limitsChanged_(launch_.environment),
      loginItem_(files_, autostartSession(launch_.environment, files_, ::getuid()),
                 launch_.executable, isExecutableFile),
      agentStopper_(launch_.environment),
      keys_(UserKeys::open(launch_.environment, files_)),
      phones_(keys_->store(), ownBundleInfo(files_), QDesktopServices::openUrl),
      model_(surroundings(claim.folders.home)),
      accountSignIn_(phones_.signIn(), model_) {}

PublisherDoors Application::publisherDoors() {
    return {.records = phones_.records(),
            .keys = keys_->store(),
            .defaults = store_,
            .right = phones_.right(),
            .now = wallClock,
            .sleep = sleepFor};
}

HelperModel::Surroundings Application::surroundings(const std::string& home) {
    return {.defaults = store_,
            .files = files_,
            .home = home,
            .commandEnvironment = {.executable = launch_.executable,
                                   .installedCandidates = installedCandidates(home),
                                   .rejectDevelopmentLocations = true,
                                   .isExecutable = isExecutableFile},
            .codexEnvironment = launch_.environment,
            .locale = locale_,
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
            .cloud = makeCloudPublisher(publisherDoors()),
            .phone = makePhoneLinkPublisher(publisherDoors()),
            .systemServices = HelperModel::SystemServices{folderWatch_, limitsChanged_, loginItem_,
                                                          agentStopper_}};
}

}  // namespace brimwatch
