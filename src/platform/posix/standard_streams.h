// The three standard descriptors of a process that must not fail because of them.
#pragma once

#include <string>
#include <string_view>

namespace brimwatch {

// Opens the null device for each standard descriptor that the process was started without, so that
// no other file can come to stand in its place. Call it before anything is opened.
void holdStandardDescriptors();

// Standard input to its end, of any size. What could be read counts.
std::string readStandardInput();

// As much as the other side takes; failures are dropped.
void writeStandardOutput(std::string_view bytes);
void writeStandardError(std::string_view bytes);

}  // namespace brimwatch
