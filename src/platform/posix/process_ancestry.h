// Which processes led to this one, as /proc tells it.
#pragma once

namespace brimwatch {

// Whether one of the eight nearest ancestors is this same executable, by device and inode, run with
// "--statusline" as its first argument. What /proc does not tell counts as no;
// and a process that outlived all that led from there to here leads nowhere.
bool hasStatusLineAncestor();

}  // namespace brimwatch
