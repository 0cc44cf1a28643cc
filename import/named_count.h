// How many there are of something that a message tells of, and the name of the first, so that it can be
// looked up.
#pragma once

#include <cstdint>
#include <string>

struct named_count {
    std::uint64_t number = 0;
    std::string first; ///< empty while there is none

    void add(const std::string& name) {
        if (number++ == 0)
            first = name;
    }
    /// For a message: as printf's %llu takes it.
    unsigned long long shown() const { return number; }
};
