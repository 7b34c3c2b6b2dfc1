// A folder that lives as long as a test needs it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brimwatch::test {

class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();  // with everything in it

    const std::string& path() const { return path_; }
    std::string file(std::string_view name) const { return path_ + '/' + std::string(name); }

  private:
    std::string path_;
};

// While it lives, temporary folders lie in memory, if the machine has such a place: for tests that
// make thousands of them.
class FoldersInMemory {
  public:
    FoldersInMemory();
    FoldersInMemory(const FoldersInMemory&) = delete;
    FoldersInMemory& operator=(const FoldersInMemory&) = delete;
    ~FoldersInMemory();

  private:
    std::optional<std::string> former_;  // the variable that names the place
};

// Makes the folders above it too.
void writeFile(const std::string& path, std::string_view bytes);
// The bytes of a file that must be there.
std::string readFile(const std::string& path);
bool exists(const std::string& path);
// A document of tests/data.
std::string testData(std::string_view name);

}  // namespace brimwatch::test
