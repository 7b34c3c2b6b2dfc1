// Word that something changed in a folder: a file came, went or was replaced.
//
// It may come late, more than once, or for nothing; one word may stand for many changes. A folder
// that can't be watched gives none, and neither does one that went away and came back. Main thread.
#pragma once

#include <functional>
#include <string>

namespace brimwatch {

class FolderWatch {
  public:
    FolderWatch() = default;
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    virtual ~FolderWatch() = default;  // ends the watch

    // Begins to watch, in place of the folder that was watched before.
    virtual void watch(const std::string& folder, std::function<void()> changed) = 0;
};

}  // namespace brimwatch
