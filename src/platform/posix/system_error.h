// Error numbers of the system as failures of the file seam.
#pragma once

#include <system_error>
#include <tl/expected.hpp>

namespace brimwatch {

inline tl::unexpected<std::error_code> systemError(int number) {
    return tl::unexpected(std::error_code(number, std::generic_category()));
}

}  // namespace brimwatch
