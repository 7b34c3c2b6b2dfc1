// Tasks that nobody waits for.
#pragma once

#include <QCoroTask>

namespace brimwatch {

// Lets the task run on to its end; what escapes from it is logged. Main thread.
void spawn(QCoro::Task<> task);

}  // namespace brimwatch
