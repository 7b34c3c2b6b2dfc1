#include "app/user_keys.h"

#include <unistd.h>

#include <optional>
#include <string>

#include "platform/linux/bus_connection.h"
#include "support/paths.h"

namespace brimwatch {

std::unique_ptr<UserKeys> UserKeys::open(const Environment& environment, FileSystem& files) {
    const std::optional<std::string> data = dataFolder(environment, files, ::getuid());
    const std::optional<std::string> state = stateFolder(environment, files, ::getuid());
    if (!data || !state) return nullptr;
    return std::unique_ptr<UserKeys>(new UserKeys({.busAddress = sessionBusAddress(environment),
                                                   .keyFolder = joinPath(*data, "keys"),
                                                   .choiceFile = joinPath(*state, "keyStore.json")},
                                                  files));
}

UserKeys::UserKeys(const Places& places, FileSystem& files)
    : secretService_(places.busAddress),
      keyFiles_(files, places.keyFolder, ::getuid()),
      chosen_({.secretService = secretService_,
               .isServiceMissing = [this] { return secretService_.isMissing(); },
               .files = keyFiles_,
               .hasFiles = [this] { return keyFiles_.hasItems(); }},
              files, places.choiceFile) {}

}  // namespace brimwatch
