// The strict form of a limits file: what it takes it can write, and reads back as the same value.

#include <cstdint>
#include <string_view>

#include "limits/limits_file.h"
#include "limits/limits_memory.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using brimwatch::LimitsFile;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto file = LimitsFile::decode(text);
    if (!file) return 0;
    const std::string encoded = file->encode();
    REQUIRE(LimitsFile::decode(encoded) == file);
    REQUIRE(LimitsFile::decode(encoded)->encode() == encoded);
    for (const auto& [key, window] : file->windows) {
        const LimitsFile::Windows alone = {{key, window}};
        const auto merged = brimwatch::LimitsMemory::merge(file->windows, alone, file->updatedAt);
        REQUIRE(merged.windows == file->windows);
    }
    return 0;
}
