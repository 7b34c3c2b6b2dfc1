// Where unguessable bytes come from. A function, so that a test can know them.
#pragma once

#include <functional>
#include <span>

namespace brimwatch {

// Fills all of the bytes.
using RandomBytes = std::function<void(std::span<unsigned char>)>;

// Good enough for keys. Aborts where there is no randomness: what would be made instead could be
// guessed. Any thread.
void fillWithRandomBytes(std::span<unsigned char> bytes);

}  // namespace brimwatch
