// Which of two figures to believe.
#pragma once

#include <cstdint>

#include "limits/limits_file.h"

namespace brimwatch {

struct LimitsMemory {
    struct Merged {
        LimitsFile::Windows windows;
        bool changed = false;  // whether a figure of `next` counts as news

        bool operator==(const Merged&) const = default;
    };

    // Joins what is stored with what was reported, key by key. Within one reset cycle a figure only
    // rises; a later cycle replaces an earlier one; a report already past its reset never displaces
    // a live one. Reset times up to an hour apart are one cycle. `now` in seconds since 1970-01-01
    // UTC.
    static Merged merge(const LimitsFile::Windows& old, const LimitsFile::Windows& next,
                        std::int64_t now);
};

}  // namespace brimwatch
