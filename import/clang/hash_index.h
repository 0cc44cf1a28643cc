// An index of numbered things by a hash of each: one table, whatever the things are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Mixes `value` into `hash`; the high bits of the result depend on all bits of both.
constexpr std::uint64_t mix_hash(std::uint64_t hash, std::uint64_t value) {
    const std::uint64_t mixed = (hash ^ value) * 0x9e3779b97f4a7c15U;
    return mixed ^ (mixed >> 29);
}

class hash_index {
  public:
    static constexpr std::uint32_t kNone = 0xffffffff;

    /// The number that was added with `hash` and for which `is_same` holds; kNone when there is none. Numbers
    /// of other hashes may be asked for, too.
    template <typename Same> std::uint32_t find(std::uint64_t hash, Same is_same) const {
        if (slots_.empty())
            return kNone;
        const std::uint32_t tag = tag_of(hash);
        for (std::size_t at = home(tag);; at = (at + 1) & (slots_.size() - 1)) {
            const slot& found = slots_[at];
            if (found.number == kNone || (found.tag == tag && is_same(found.number)))
                return found.number;
        }
    }

    /// Lets the processor fetch what is to be looked up soon: a large table is mostly not at hand.
    void prepare(std::uint64_t hash) const {
        if (!slots_.empty())
            __builtin_prefetch(&slots_[home(tag_of(hash))]);
    }

    /// Adds a number, which is not kNone.
    void add(std::uint64_t hash, std::uint32_t number) {
        if (used_ * 2 >= slots_.size())
            grow();
        place({tag_of(hash), number});
        ++used_;
    }

  private:
    struct slot {
        std::uint32_t tag; ///< half of a mixed hash: small slots are quicker to get at
        std::uint32_t number;
    };

    /// The hash may be anything, also numbers in a row: the tag depends on all of its bits.
    static std::uint32_t tag_of(std::uint64_t hash) {
        return static_cast<std::uint32_t>(mix_hash(hash, 0) >> 24);
    }
    std::size_t home(std::uint32_t tag) const { return tag & (slots_.size() - 1); }

    void place(const slot& added) {
        std::size_t at = home(added.tag);
        while (slots_[at].number != kNone)
            at = (at + 1) & (slots_.size() - 1);
        slots_[at] = added;
    }

    void grow() {
        std::vector<slot> before(slots_.empty() ? kSmallest : slots_.size() * 2, slot{0, kNone});
        before.swap(slots_);
        for (const slot& each : before) {
            if (each.number != kNone)
                place(each);
        }
    }

    static constexpr std::size_t kSmallest = 1024;

    std::vector<slot> slots_; ///< their number is a power of two; at most half of them are used
    std::size_t used_ = 0;
};
