// The clock of what is stored and shown.
#pragma once

#include "support/instant.h"

namespace brimwatch {

Instant wallClock();

}  // namespace brimwatch
