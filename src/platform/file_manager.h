// The program in which the user looks at folders. Main thread.
#pragma once

#include <string>

namespace brimwatch {

class FileManager {
  public:
    FileManager() = default;
    FileManager(const FileManager&) = delete;
    FileManager& operator=(const FileManager&) = delete;
    virtual ~FileManager() = default;

    // Shows the file or folder where it lies. Nothing comes back: what can't be shown is logged.
    virtual void reveal(const std::string& path) = 0;
};

}  // namespace brimwatch
