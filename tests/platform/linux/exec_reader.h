// A second reader for the key Exec of desktop entries, which takes it apart as a launcher does.
#pragma once

#include <string>
#include <vector>

namespace brimwatch::test {

// The arguments that a value without field codes stands for. Throws std::runtime_error for what the
// Desktop Entry Specification doesn't allow.
std::vector<std::string> readExec(const std::string& value);

}  // namespace brimwatch::test
