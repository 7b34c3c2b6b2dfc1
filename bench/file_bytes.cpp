#include "bench/file_bytes.h"

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace brimwatch::bench {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File openFile(const std::string& path, const char* mode) {
    File file(std::fopen(path.c_str(), mode));
    if (!file) throw std::runtime_error("can't open " + path);
    return file;
}

}  // namespace

std::string readFile(const std::string& path) {
    const File file = openFile(path, "re");
    std::string bytes;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get()))
        bytes.append(buffer.data(), count);
    return bytes;
}

void writeFile(const std::string& path, std::string_view bytes) {
    const File file = openFile(path, "we");
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fflush(file.get()) != 0) {
        throw std::runtime_error("can't write " + path);
    }
}

}  // namespace brimwatch::bench
