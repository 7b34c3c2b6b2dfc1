#include "main/desktop_program.h"

#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/posix/executable_path.h"
#include "support/paths.h"

namespace brimwatch {

std::optional<std::string> desktopProgramPath() {
    const std::optional<std::string> own = resolvedExecutablePath();
    if (!own) return std::nullopt;
    return joinPath(parentPath(parentPath(*own)), "libexec/brimwatch/brimwatch-desktop");
}

std::error_code becomeDesktopProgram(const std::string& path, char* const* arguments) {
    std::optional<std::string> called = calledExecutablePath();
    if (!called) return std::make_error_code(std::errc::no_such_file_or_directory);
    std::vector<char*> list = {called->data()};
    for (char* const* argument = arguments; *argument != nullptr; ++argument) {
        if (argument != arguments) list.push_back(*argument);
    }
    list.push_back(nullptr);
    ::execv(path.c_str(), list.data());
    return {errno, std::generic_category()};
}

}  // namespace brimwatch
