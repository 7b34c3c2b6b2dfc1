// The menu of the status item: the figures of each account, then what can be done.
#pragma once

#include <vector>

#include "core/helper_model.h"
#include "platform/status_item.h"
#include "support/instant.h"

namespace brimwatch {

// The ids of the commands.
enum class StatusMenuCommand { open = 1, receiveNow, setup, quit };

// Rows of text as in "Claude · work — 주간 72% 남음 · 5시간 40% 남음", in the order of the cards.
std::vector<StatusItem::MenuRow> statusMenuRows(const HelperModel& model, Instant now);

}  // namespace brimwatch
