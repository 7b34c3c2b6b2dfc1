#include "platform/bundle_info.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "support/json_reader.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::size_t sizeLimit = 65'536;

std::string text(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    const std::string* found = value != nullptr ? value->string() : nullptr;
    return found != nullptr ? *found : std::string();
}

const std::string& required(const std::string& value, const char* key) {
    if (!value.empty()) return value;
    static_cast<void>(std::fprintf(stderr, "brimwatch: this build has no %s\n", key));
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

const std::string& BundleInfo::requiredKeychainAccessGroup() const {
    return required(keychainAccessGroup, "QMKeychainAccessGroup");
}

const std::string& BundleInfo::requiredCloudContainer() const {
    return required(cloudContainer, "QMICloudContainer");
}

bool BundleInfo::canPublish() const {
    return !cloudContainer.empty() && !cloudEnvironment.empty() && !cloudApiToken.empty();
}

BundleInfo parseBundleInfo(std::string_view json) {
    const std::optional<JsonObject> object = parseJsonObject(json);
    if (!object) return {};
    return {.bundleIdentifier = text(*object, "CFBundleIdentifier"),
            .version = text(*object, "CFBundleVersion"),
            .shortVersion = text(*object, "CFBundleShortVersionString"),
            .keychainAccessGroup = text(*object, "QMKeychainAccessGroup"),
            .cloudContainer = text(*object, "QMICloudContainer"),
            .cloudEnvironment = text(*object, "QMICloudEnvironment"),
            .cloudApiToken = text(*object, "QMICloudApiToken"),
            .cloudService = text(*object, "QMICloudService"),
            .cloudSignInRedirect = text(*object, "QMICloudSignInRedirect"),
            .privateUpdatesKeychainGroup = text(*object, "QMPrivateUpdatesKeychainGroup"),
            .updateHost = text(*object, "QMUpdateHost"),
            .publicUpdateFeed = text(*object, "SUFeedURL"),
            .publicUpdateSigningKey = text(*object, "SUPublicEDKey")};
}

BundleInfo readBundleInfo(FileSystem& files, const std::string& path) {
    const FileResult<std::string> bytes = files.read(path, sizeLimit);
    return bytes ? parseBundleInfo(*bytes) : BundleInfo();
}

std::string bundleInfoPath(std::string_view executable) {
    return joinPath(parentPath(executable), "bundle-info.json");
}

}  // namespace brimwatch
