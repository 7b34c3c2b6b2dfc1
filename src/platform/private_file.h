// A file that belongs to the user, that nobody else can read, and that is small: the one way in
// which a secret is handed to the program.
#pragma once

#include <tl/expected.hpp>

#include "support/secret_bytes.h"

namespace brimwatch {

enum class PrivateFileFailure {
    unreadable,   // or a symbolic link, or no regular file
    permissions,  // of another user, or with other permissions than 0600
    size,         // empty, or too large
};

using PrivateFileResult = tl::expected<SecretBytes, PrivateFileFailure>;

}  // namespace brimwatch
