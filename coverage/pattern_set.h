// Finds out which kinds of patterns occur in a text, in one pass over the text however many patterns there
// are.
//
// The automaton is that of A. V. Aho and M. J. Corasick, "Efficient string matching: an aid to bibliographic
// search", Communications of the ACM 18 (1975): a trie of the patterns whose states also know the longest
// proper suffix that is a state.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

class pattern_set {
  public:
    pattern_set() { clear(); }

    /// Forgets all patterns.
    void clear();

    /// Adds a pattern, which may be empty, with the bits to report when it occurs.
    void add(std::string_view pattern, std::uint8_t bits);

    /// Makes the set ready for match(), once, after the last add().
    void prepare();

    /// The bits of all patterns that occur in `text`. Stops early once `enough` is among them.
    std::uint8_t match(std::string_view text, std::uint8_t enough) const;

  private:
    /// A state of the trie. State 0 is the root; as nothing leads to it but a suffix, 0 also means none.
    struct state {
        std::uint32_t first_child = 0;
        std::uint32_t next_sibling = 0;
        std::uint32_t suffix = 0; ///< longest proper suffix that is a state
        unsigned char byte = 0;   ///< on the edge that leads here
        std::uint8_t bits = 0;    ///< of the patterns that end here and, once prepared, of their suffixes
    };

    std::uint32_t child(std::uint32_t from, unsigned char byte) const;
    std::uint32_t next(std::uint32_t from, unsigned char byte) const;

    std::vector<state> states_;
    std::uint32_t root_children_[256]; ///< the root has most edges: its children by byte
};
