#include "harness/temporary_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace brimwatch::test {

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "brimwatch-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

FoldersInMemory::FoldersInMemory() {
    const char* former = std::getenv("TMPDIR");
    if (former != nullptr) former_ = former;
    constexpr const char* place = "/dev/shm";
    if (::access(place, W_OK | X_OK) == 0) ::setenv("TMPDIR", place, 1);
}

FoldersInMemory::~FoldersInMemory() {
    if (former_) {
        ::setenv("TMPDIR", former_->c_str(), 1);
    } else {
        ::unsetenv("TMPDIR");
    }
}

void writeFile(const std::string& path, std::string_view bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
    if (!file.flush()) throw std::runtime_error("can't write " + path);
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("can't read " + path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

std::string testData(std::string_view name) {
    return readFile(BRIMWATCH_TEST_DATA "/" + std::string(name));
}

}  // namespace brimwatch::test
