#include "app/private_update_role.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "app/program_path.h"
#include "app/user_keys.h"
#include "platform/key_store.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/private_file.h"
#include "platform/posix/standard_streams.h"
#include "updates/mac_private_update_credentials.h"
#include "updates/private_update_commands.h"

namespace brimwatch {
namespace {

constexpr int exitFailure = 2;

int fail(std::string_view message) {
    writeStandardError(std::string(message) + '\n');
    return exitFailure;
}

PrivateFileResult readConfigurationFile(const std::string& path) {
    return readPrivateFile(path, ::getuid(), privateUpdateSizeLimit);
}

BundleInfo readOwnInfo() {
    PosixFileSystem files;
    return ownBundleInfo(files);
}

// Of a user without a home folder: there is no place for an item.
class NoKeyStore final : public KeyStore {
  public:
    KeyStatus add(const KeyItem& /*item*/, const SecretBytes& /*value*/,
                  KeyPrompt /*prompt*/) override {
        return key_status::notAvailable;
    }
    Match copyMatching(const KeyItem& /*item*/, KeyPrompt /*prompt*/) override {
        return {.status = key_status::notAvailable};
    }
    KeyStatus update(const KeyItem& /*item*/, const SecretBytes& /*value*/,
                     KeyPrompt /*prompt*/) override {
        return key_status::notAvailable;
    }
    KeyStatus remove(const KeyItem& /*item*/, KeyPrompt /*prompt*/) override {
        return key_status::notAvailable;
    }
};

MacPrivateUpdateResult<void> carryOut(Role role, const std::string& path, KeyStore& keys) {
    return role == Role::configurePrivateUpdates
               ? configurePrivateUpdates(path, readConfigurationFile, readOwnInfo, keys)
               : clearPrivateUpdates(readOwnInfo, keys);
}

}  // namespace

int runPrivateUpdateRole(Role role, const std::string& path, const Environment& environment) {
    using Failure = MacPrivateUpdateFailure;
    if (role == Role::usageFailure)
        return fail(Failure{.reason = Failure::Reason::syntax}.message());
    PosixFileSystem files;
    const std::unique_ptr<UserKeys> keys = UserKeys::open(environment, files);
    NoKeyStore none;
    const MacPrivateUpdateResult<void> result = carryOut(role, path, keys ? keys->store() : none);
    if (!result && !keys && result.error().reason == Failure::Reason::keychain)
        return fail("Private update configuration failed.");
    if (!result) return fail(result.error().message());
    writeStandardOutput("Private update configuration updated. Restart the app to apply it.\n");
    return EXIT_SUCCESS;
}

}  // namespace brimwatch
