// Whole files, without iostream. Failures are thrown as std::runtime_error.
#pragma once

#include <string>
#include <string_view>

namespace brimwatch::bench {

std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view bytes);

}  // namespace brimwatch::bench
