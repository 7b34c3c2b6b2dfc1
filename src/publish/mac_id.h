// The identity of one computer among those that share a key.
#pragma once

#include <string>

namespace brimwatch {

struct MacId {
    std::string text;  // an uppercase UUID

    friend bool operator==(const MacId&, const MacId&) = default;
    friend bool operator<(const MacId& a, const MacId& b) { return a.text < b.text; }
};

}  // namespace brimwatch
