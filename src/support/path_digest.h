// A short mark that keeps two folders of the same name apart.
#pragma once

#include <string>
#include <string_view>

namespace brimwatch {

// The first 6 bytes of the SHA-256 of the path's bytes, as 12 lower-case hexadecimal digits.
std::string pathDigest(std::string_view path);

}  // namespace brimwatch
