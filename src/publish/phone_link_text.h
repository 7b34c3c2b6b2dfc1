// The text that carries the key of the link to an Android phone, by a picture or by hand. Whoever
// has it can see the limits.
#pragma once

#include <string>

#include "publish/symmetric_key.h"

namespace brimwatch {

// "brimwatch://link?v=1&k=" and the key in base64url without padding: 66 ASCII characters.
std::string phoneLinkText(const SymmetricKey& key);

}  // namespace brimwatch
