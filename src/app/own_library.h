// A library of this program, which lies beside it and is loaded when it is first needed.
#pragma once

#include <QFunctionPointer>

namespace brimwatch {

// The function of that name in the library of that file name. Null, and a line in the log, if it
// can't be had. The library stays loaded. Any thread.
QFunctionPointer findInOwnLibrary(const char* fileName, const char* function);

}  // namespace brimwatch
