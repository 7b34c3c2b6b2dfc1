// What the two publishers have in common: the states that both can be in, and the right to publish.
#pragma once

#include <string>

#include "support/instant.h"

namespace brimwatch {

// A build without it sends nothing, as long as it runs.
enum class PublishingRight { granted, missing };

namespace publication {

struct Waiting {  // for limits to send
    bool operator==(const Waiting&) const = default;
};
struct Sent {
    Instant at;

    bool operator==(const Sent&) const = default;
};
struct Failed {
    std::string text;

    bool operator==(const Failed&) const = default;
};
struct NoAccount {
    bool operator==(const NoAccount&) const = default;
};
struct Unavailable {  // the right is missing
    bool operator==(const Unavailable&) const = default;
};

}  // namespace publication
}  // namespace brimwatch
