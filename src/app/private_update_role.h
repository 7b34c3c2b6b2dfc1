// The role in which the program changes the credentials of private updates and leaves.
#pragma once

#include <string>

#include "support/environment.h"
#include "support/role.h"

namespace brimwatch {

// Carries out one of the two commands, or tells of one that means nothing, on the standard streams.
// Gives the exit status: 0, or 2 where it failed. The path is that of the configuration file. Needs
// a QCoreApplication, but no display.
int runPrivateUpdateRole(Role role, const std::string& path, const Environment& environment);

}  // namespace brimwatch
