// The two commands of a terminal that change the credentials of private updates. They take effect
// when the application is started the next time. Main thread.
#pragma once

#include <functional>
#include <string>

#include "platform/bundle_info.h"
#include "platform/key_store.h"
#include "platform/private_file.h"
#include "updates/mac_private_update_failure.h"

namespace brimwatch {

// Reads a file of at most `privateUpdateSizeLimit` bytes.
using ReadPrivateFile = std::function<PrivateFileResult(const std::string& path)>;
// What the build was made with; not asked for before the file has passed.
using ReadBundleInfo = std::function<BundleInfo()>;

MacPrivateUpdateResult<void> configurePrivateUpdates(const std::string& path,
                                                     const ReadPrivateFile& readFile,
                                                     const ReadBundleInfo& readInfo,
                                                     KeyStore& keys);
MacPrivateUpdateResult<void> clearPrivateUpdates(const ReadBundleInfo& readInfo, KeyStore& keys);

}  // namespace brimwatch
