// The functions of a made-up source: their text, and what the profiles say of them.
#pragma once

#include "bench/tree.h"

#include <cstdint>
#include <string>
#include <vector>

/// Numbers that look random and are the same in every run.
class sequence {
  public:
    explicit sequence(std::uint64_t seed) : state_(seed) {}
    /// A number below `limit`.
    std::uint64_t below(std::uint64_t limit) {
        state_ += 0x9e3779b97f4a7c15u;
        std::uint64_t mixed = (state_ ^ (state_ >> 30)) * 0xbf58476d1ce4e5b9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
        return (mixed ^ (mixed >> 31)) % limit;
    }

  private:
    std::uint64_t state_;
};

struct position {
    std::uint32_t line;
    std::uint32_t column;
};

struct function_facts {
    std::string name;                  ///< as the compiler would emit it
    std::uint32_t line = 0;            ///< first line
    std::vector<position> blocks;      ///< ascending
    std::vector<std::uint64_t> counts; ///< one for each block
};

/// One count for each block of a function.
std::vector<std::uint64_t> block_counts(const tree_sizes& sizes, sequence& numbers);

/// Appends one function of sizes.lines lines to the text of a file, as its function `index` and from
/// `first_line` on. Its first block starts at the opening brace, its last one at the closing brace, the
/// others in between.
function_facts append_function(std::string& text, const tree_sizes& sizes, std::uint64_t index,
                               std::uint32_t first_line, sequence& numbers);
