#include "platform/linux/secret_service_statuses.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace brimwatch {
namespace {

struct Meaning {
    std::string_view error;
    KeyStatus status;
};

constexpr std::string_view unknownObject = "org.freedesktop.DBus.Error.UnknownObject";
constexpr std::string_view unknownMethod = "org.freedesktop.DBus.Error.UnknownMethod";

constexpr std::array meanings = {
    Meaning{"org.freedesktop.Secret.Error.IsLocked", key_status::interactionNotAllowed},
    Meaning{"org.freedesktop.Secret.Error.NoSuchObject", key_status::itemNotFound},
    Meaning{"org.freedesktop.Secret.Error.NoSession", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.ServiceUnknown", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.NameHasNoOwner", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.NoReply", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.Timeout", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.TimedOut", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.Disconnected", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.NoServer", key_status::notAvailable},
    Meaning{"org.freedesktop.DBus.Error.AccessDenied", key_status::missingEntitlement},
};

// gnome-keyring tells of a missing object by a missing method.
bool isMissingObject(std::string_view error) {
    return error == unknownObject || error == unknownMethod ||
           error == "org.freedesktop.Secret.Error.NoSuchObject";
}

}  // namespace

KeyStatus statusOfBusError(const QString& errorName, SecretObject object) {
    const std::string error = errorName.toStdString();
    if (isMissingObject(error) && object == SecretObject::item) return key_status::itemNotFound;
    if (isMissingObject(error) && object == SecretObject::collection)
        return key_status::notAvailable;
    // A service that has no session of the plain kind is of no use.
    if (error == "org.freedesktop.DBus.Error.NotSupported" && object == SecretObject::service)
        return key_status::notAvailable;
    if (error.starts_with("org.freedesktop.DBus.Error.Spawn.")) return key_status::notAvailable;
    const auto* const known =
        std::find_if(meanings.begin(), meanings.end(),
                     [&](const Meaning& meaning) { return meaning.error == error; });
    return known != meanings.end() ? known->status : key_status::internalError;
}

}  // namespace brimwatch
