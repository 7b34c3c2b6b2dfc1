// What the errors of a secret service mean, in the numbers of a keychain. A pure function.
#pragma once

#include <QString>

#include "platform/key_store.h"

namespace brimwatch {

// What a call was about: an object that is missing means something else for each.
enum class SecretObject { service, collection, item };

// `interactionNotAllowed` stands for "locked".
KeyStatus statusOfBusError(const QString& errorName, SecretObject object);

}  // namespace brimwatch
