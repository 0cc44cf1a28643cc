// Texts that came before: programs of one build hold the same names again and again.
#pragma once

#include "import/clang/hash_index.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

/// A hash that is much faster than those of the profiles: two rows of parts are mixed side by side.
inline std::uint64_t quick_hash(std::string_view text) {
    std::uint64_t hashes[2] = {text.size(), 0};
    std::uint64_t parts[2] = {};
    if (text.size() < sizeof parts) {
        if (!text.empty())
            std::memcpy(parts, text.data(), text.size());
        return mix_hash(mix_hash(hashes[0], parts[0]), parts[1]);
    }
    const char* const last = text.data() + text.size() - sizeof parts; // may have bytes that were mixed in
    for (const char* at = text.data(); at < last; at += sizeof parts) {
        std::memcpy(parts, at, sizeof parts);
        hashes[0] = mix_hash(hashes[0], parts[0]);
        hashes[1] = mix_hash(hashes[1], parts[1]);
    }
    std::memcpy(parts, last, sizeof parts);
    return mix_hash(mix_hash(hashes[0], parts[0]), mix_hash(hashes[1], parts[1]));
}

/// Remembers hashes, as many as there is room for: what was seen may be forgotten. A hash stands for its
/// text, so whoever asks must come to the same result, if more slowly, when two texts have one.
class seen_texts {
  public:
    bool contains(std::uint64_t hash) const {
        return !slots_.empty() && slots_[slot_of(hash)] == mark_of(hash);
    }

    void add(std::uint64_t hash) {
        slots_.resize(kSlots);
        slots_[slot_of(hash)] = mark_of(hash);
    }

  private:
    static constexpr std::size_t kSlots = std::size_t{1} << 16;

    static std::size_t slot_of(std::uint64_t hash) { return static_cast<std::size_t>(hash >> 24) % kSlots; }

    /// A part of the hash that the slot does not tell; never 0.
    static std::uint32_t mark_of(std::uint64_t hash) {
        return static_cast<std::uint32_t>(hash >> 40) << 8 | (hash & 0xff) | 1;
    }

    std::vector<std::uint32_t> slots_; ///< 0: none was seen
};
