// The counters of all profiles, added up. A function is known by the hash of its name and that of its
// structure.
#pragma once

#include "import/clang/byte_buffer.h"
#include "import/clang/function_mapping.h"
#include "import/clang/hash_index.h"

#include <cstdint>
#include <limits>

class counter_store {
  public:
    /// The counters of a function, to which a profile's are added; zero when the function is new. Null when
    /// it is known with another number of counters: it is left out then, and counted.
    std::uint64_t* counters_of(std::uint64_t name, std::uint64_t structure, std::size_t number);

    /// Tells of a function whose counters are asked for soon.
    void prepare(std::uint64_t name) const { names_.prepare(name); }

    /// Whether any function has the name.
    bool knows(std::uint64_t name) const { return first_of(name) != hash_index::kNone; }

    /// The counters of a function; null data: it is not known.
    function_counters find(std::uint64_t name, std::uint64_t structure) const;

    bool empty() const { return entries_.empty(); }

    /// How often a function was left out.
    std::uint64_t different() const { return different_; }

  private:
    struct identity {
        std::uint64_t name;
        std::uint64_t structure;
        bool operator==(const identity&) const = default;
    };
    struct function {
        identity id;
        std::uint64_t* counters;
        std::size_t number;
    };

    std::uint32_t first_of(std::uint64_t name) const {
        return names_.find(name, [&](std::uint32_t index) { return entries_[index].id.name == name; });
    }
    std::uint32_t find_entry(const identity& id) const;
    std::uint32_t entry_of(const identity& id, std::size_t number);

    numbered_store<function> entries_;
    row_store<std::uint64_t> counters_;
    hash_index names_;  ///< the first of `entries_` with each name, which is mostly the only one
    hash_index others_; ///< the others
    std::uint32_t expected_ =
        0; ///< where the next function likely is: the profiles of a program have one order
    std::uint64_t different_ = 0;
};

/// Adds to a counter, which stays at its limit. Three values above it have meanings in the profiles.
inline void add_to_counter(std::uint64_t* counter, std::uint64_t value) {
    constexpr std::uint64_t limit = std::numeric_limits<std::uint64_t>::max() - 2;
    *counter = *counter > limit || value > limit - *counter ? limit : *counter + value;
}
