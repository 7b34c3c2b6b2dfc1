// The identity of this computer among those that share a key.
#pragma once

#include "platform/settings_store.h"
#include "publish/mac_id.h"

namespace brimwatch {

// Made at its first use, and the same ever after.
MacId ownMacId(SettingsStore& defaults);

}  // namespace brimwatch
