// The library that unpacks updates, which lies beside the desktop program and is loaded for the
// first one: readers of archives would take a megabyte of a program that only sits in the panel.
#pragma once

#include <atomic>
#include <tl/expected.hpp>

#include "platform/linux/update_archive.h"

namespace brimwatch {

// As `unpackUpdate`; without the library, and a line in the log, it fails as the disk does. Any
// thread.
tl::expected<void, UnpackFailure> unpackByLibrary(int archive, int folder,
                                                  const std::atomic<bool>& isCancelled);

// What the library offers under the name `brimwatchUnpackUpdate`: both sides are of one build.
using UnpackUpdateInto = void(int archive, int folder, const std::atomic<bool>& isCancelled,
                              tl::expected<void, UnpackFailure>& result);

}  // namespace brimwatch
