// The status line command: whatever it takes is a command that it could have written.

#include <cstdint>
#include <string_view>

#include "claude/status_line_command.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto path = brimwatch::parseStatusLineCommand(text);
    if (!path) return 0;
    REQUIRE(path->starts_with('/'));
    const std::string written = brimwatch::statusLineCommand(*path, std::nullopt);
    REQUIRE(brimwatch::parseStatusLineCommand(written) == path);
    const bool isQuoted = text.starts_with('\'');
    REQUIRE(text.starts_with(isQuoted ? std::string_view(written) : std::string_view(*path)));
    return 0;
}
