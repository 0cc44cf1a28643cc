// Finds out which kinds of patterns occur in a text, in one pass over the text however many patterns there
// are.
//
// The automaton is that of A. V. Aho and M. J. Corasick, "Efficient string matching: an aid to bibliographic
// search", Communications of the ACM 18 (1975): a trie of the patterns whose states also know the longest
// proper suffix that is a state.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

class pattern_set {
  public:
    /// Forgets all patterns.
    void clear();

    /// Adds a pattern, which may be empty, with the bits to report when it occurs.
    void add(std::string_view pattern, std::uint8_t bits);

    /// Makes the set ready for match(), once, after the last add().
    void prepare();

    /// The bits of all patterns that occur in `text`. Stops early once `enough` is among them.
    std::uint8_t match(std::string_view text, std::uint8_t enough) const;

  private:
    struct state {
        std::uint32_t suffix = 0; ///< state of the longest proper suffix
        std::uint8_t bits = 0;    ///< of the patterns that end here, and of their suffixes
    };

    /// Key of the edge that leaves `from` with `byte`.
    static std::uint64_t edge(std::uint32_t from, unsigned char byte) {
        return std::uint64_t{from} << 8 | byte;
    }

    std::vector<state> states_ = std::vector<state>(1); ///< state 0 is the root
    std::unordered_map<std::uint64_t, std::uint32_t> edges_;
    std::vector<std::uint64_t> edge_order_; ///< edges in order of creation
};
