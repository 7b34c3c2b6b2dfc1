// A start of the program while another one runs.
#pragma once

#include <chrono>
#include <optional>
#include <tl/expected.hpp>

#include "app/application.h"
#include "support/environment.h"

namespace brimwatch {

// The right to be the one that runs, if it is free; nothing, if the one that runs has come forward.
//
// That one may still be starting, and have no name on the bus or no time to answer, or be about to
// end. So it is asked again until it answers or lets go of its right, or until the time is over.
// Where there is no bus it can't be reached, and is not waited for.
//
// Needs a QCoreApplication, and keeps its thread until then.
tl::expected<std::optional<Application::Claim>, Application::Refusal> claimOrGiveWay(
    const Environment& environment, std::chrono::milliseconds longestWait);

}  // namespace brimwatch
