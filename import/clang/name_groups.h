// Which names are worth their hash: programs hold those of all instrumented functions, also of many from
// system headers, which have no mapping and whose names nobody asks for.
#pragma once

#include "import/clang/hash_index.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Groups names by how they begin, which is mostly the namespace, and remembers which groups were of no use.
class name_groups {
  public:
    /// Whether a name had better wait until it is clear that one is missing: it is of the standard library,
    /// or many of its group were of no use, and none was of use. What belongs to one source file alone does
    /// not wait.
    bool can_wait(std::string_view name) const {
        const std::uint64_t hash = hash_of(name);
        const group& found = groups_[hash % kGroups];
        if (found.hash != hash)
            return is_of_library(name);
        return !found.useful && (found.useless == kPatience || is_of_library(name)) && name.starts_with("_Z");
    }

    /// Takes note of whether a name was of use.
    void count(std::string_view name, bool useful) {
        const std::uint64_t hash = hash_of(name);
        group& found = groups_[hash % kGroups];
        if (found.hash != hash)
            found = {hash, 0, false};
        found.useful = found.useful || useful;
        found.useless += found.useless < kPatience ? 1 : 0;
    }

  private:
    static constexpr std::uint32_t kPatience = 64; ///< names of no use
    static constexpr std::size_t kGroups = 1024;   ///< another one takes the place of what was there
    static constexpr std::size_t kStart = 11;      ///< bytes that tell most namespaces

    struct group {
        std::uint64_t hash;
        std::uint32_t useless; ///< names without a use
        bool useful;
    };

    static bool is_of_library(std::string_view name) {
        return name.starts_with("_ZNSt") || name.starts_with("_ZNKSt") || name.starts_with("_ZSt");
    }

    static std::uint64_t hash_of(std::string_view name) {
        if (name.size() < kStart)
            return name.size();
        std::uint64_t start = 0;
        std::uint32_t rest = 0;
        std::memcpy(&start, name.data(), sizeof start);
        std::memcpy(&rest, name.data() + kStart - sizeof rest, sizeof rest);
        return mix_hash(mix_hash(0, start), rest);
    }

    std::array<group, kGroups> groups_ = {};
};
