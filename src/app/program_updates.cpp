#include "app/program_updates.h"

#include <unistd.h>

#include <memory>
#include <utility>

#include "platform/linux/appcast_update_engine.h"
#include "platform/linux/boot_sleep.h"
#include "platform/posix/wall_clock.h"

namespace brimwatch {
namespace {

// The language of a locale as "ko_KR.UTF-8".
std::string languageOf(const std::string& locale) {
    const std::string language = locale.substr(0, locale.find_first_of("_.@-"));
    const bool isNone = language.empty() || language == "C" || language == "POSIX";
    return isNone ? "ko" : language;
}

}  // namespace

ProgramUpdates::ProgramUpdates(Surroundings surroundings)
    : surroundings_(std::move(surroundings)),
      folders_(VersionFolders::find(surroundings_.files, surroundings_.desktopProgram, ::getuid())),
      updater_({.keys = surroundings_.keys,
                .info = surroundings_.info,
                .makeEngine = [this](UpdateDelegate& delegate) { return makeEngine(delegate); },
                .sleep = sleepFor,
                .activateApplication = surroundings_.activateApplication}) {}

std::unique_ptr<UpdateEngine> ProgramUpdates::makeEngine(UpdateDelegate& delegate) {
    return std::make_unique<AppcastUpdateEngine>(
        delegate, AppcastUpdateEngine::Setup{.files = surroundings_.files,
                                             .stateFolder = surroundings_.stateFolder,
                                             .info = surroundings_.info,
                                             .folders = folders_,
                                             .language = languageOf(surroundings_.locale),
                                             .unpack = surroundings_.unpack,
                                             .sleep = sleepFor,
                                             .now = wallClock,
                                             .relaunch = [this] { return relaunch(); }});
}

bool ProgramUpdates::relaunch() {
    const std::string current = folders_->currentCommand();
    // By the name that the user calls it by, unless that leads past the link.
    const bool leadsThere = surroundings_.files.realPath(surroundings_.command) ==
                            surroundings_.files.realPath(current);
    successor_ = leadsThere ? surroundings_.command : current;
    surroundings_.quit();
    return true;
}

}  // namespace brimwatch
