// The figures as text, for a terminal.
#pragma once

#include <string>

#include "core/helper_model.h"

namespace brimwatch {

// A line for the panel's title and gauge, and a line for each card in their order:
//
//     63%  gauge 0.63, weekly 0.63
//       Claude · work  five hours 42% left until 15:05  week 63% left until 25.11. 13:05  Max 20배
//
// Times are in the zone that the machine has now. Each line ends with a line feed.
std::string figuresText(const HelperModel& model);

}  // namespace brimwatch
