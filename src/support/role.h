// Which of its roles the program was started in.
#pragma once

#include <span>
#include <string_view>

namespace brimwatch {

enum class Role {
    application,
    statusLine,
    configurePrivateUpdates,
    clearPrivateUpdates,
    usageFailure,  // the private-update flags in a form that means nothing
};

// From the arguments without the program's path. The private-update flags are looked for
// everywhere and come first, so that none in an odd place ever starts the application.
Role classifyArguments(std::span<const std::string_view> arguments);

}  // namespace brimwatch
