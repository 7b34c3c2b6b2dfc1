// A file system that tells of each listing of a folder before it is made.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "harness/forwarding_file_system.h"

namespace brimwatch::test {

class WatchedFileSystem final : public ForwardingFileSystem {
  public:
    using ForwardingFileSystem::ForwardingFileSystem;

    std::function<void(const std::string& folder)> beforeListing;

    FileResult<std::vector<std::string>> entries(const std::string& folder) override {
        if (beforeListing) beforeListing(folder);
        return ForwardingFileSystem::entries(folder);
    }
};

}  // namespace brimwatch::test
