// Texts that came before: programs of one build hold the same names again and again.
#pragma once

#include "import/clang/hash_index.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

/// A hash that is much faster than those of the profiles.
inline std::uint64_t quick_hash(std::string_view text) {
    std::uint64_t hash = text.size();
    std::uint64_t part = 0;
    for (; text.size() >= sizeof part; text.remove_prefix(sizeof part)) {
        std::memcpy(&part, text.data(), sizeof part);
        hash = mix_hash(hash, part);
    }
    part = 0;
    if (!text.empty())
        std::memcpy(&part, text.data(), text.size());
    return mix_hash(mix_hash(hash, part), 0);
}

/// Remembers hashes, as many as there is room for: what was seen may be forgotten. A hash stands for its
/// text, so whoever asks must come to the same result, if more slowly, when two texts have one.
class seen_texts {
  public:
    bool contains(std::uint64_t hash) const { return !slots_.empty() && slots_[slot_of(hash)] == hash; }

    void add(std::uint64_t hash) {
        slots_.resize(kSlots);
        slots_[slot_of(hash)] = hash;
    }

  private:
    static constexpr std::size_t kSlots = std::size_t{1} << 16;

    static std::size_t slot_of(std::uint64_t hash) { return static_cast<std::size_t>(hash >> 24) % kSlots; }

    std::vector<std::uint64_t> slots_; ///< 0: none was seen
};
