// Making a downloaded update ready: its signature, its content, and its place among the versions.
//
// All of it is reading and writing that may take seconds, so it belongs on a thread of its own.
#pragma once

#include <atomic>
#include <string>
#include <tl/expected.hpp>

#include "platform/linux/update_archive.h"
#include "platform/linux/version_folders.h"
#include "platform/posix/file_descriptor.h"
#include "platform/update_engine.h"

namespace brimwatch {

struct PreparationOrder {
    std::string version;            // that the feed promises
    std::string signature;          // base64
    std::string publicKey;          // base64
    std::string bundleIdentifier;   // of the running program
    std::string runningVersion;     // by which versions are compared
    std::string readyVersion = {};  // whose folder must stay; empty if there is none
};

// After it the folder of that version is whole and on the disk, and nobody calls it yet. Nothing of
// the file is unpacked before its signature has been verified, and a failure leaves nothing behind.
// A cancelled one fails as the disk does.
tl::expected<void, UpdateFailure> prepareUpdate(const PreparationOrder& order,
                                                const FileDescriptor& file,
                                                const VersionFolders& folders, UnpackUpdate& unpack,
                                                const std::atomic<bool>& isCancelled);

}  // namespace brimwatch
