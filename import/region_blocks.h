// From the regions of a function to its basic blocks.
//
// The blocks' places depend on the regions, the functions defined inside and the source text only, never on
// counts, so that the profiles of two runs of one program can be compared block by block.
#pragma once

#include "common/code_cursor.h"
#include "common/source_text.h"
#include "import/source_region.h"
#include "profile/profile_content.h"

#include <optional>
#include <vector>

/// A basic block of the profile.
struct profile_block {
    source_position position;
    std::uint64_t count;
};

/// Blocks as the dynamic profile's writer takes them.
std::vector<PGOPTI_BLOCK> stored_blocks(const std::vector<profile_block>& blocks);

/// A function that is defined inside another one, such as the body of a lambda.
struct nested_function {
    source_extent extent;     ///< with its head
    std::uint32_t first_line; ///< line from which vexcov marks it when it was never called
};

/// The first code inside a function's braces; the opening brace for one without.
source_position first_code_inside(const source_extent& function, code_cursor* cursor);

/// Makes the blocks of the functions of one source file.
class block_builder {
  public:
    /// `source` must outlive this.
    explicit block_builder(const source_text& source) : source_(source) {}

    /// The blocks in ascending order of their positions, at least two: the first is the function's entry and
    /// stands at `start`, which is not behind its regions; the last stands at its closing brace and has no
    /// count yet. `regions` and `extent` as main_file_function has them, with at least one counted region.
    /// `nested`: what is defined directly inside, ascending. `own_mark`: for a function that shares
    /// its first line with another one, its first code, where vexcov marks it when it was never called.
    std::vector<profile_block> build(const std::vector<source_region>& regions, const source_extent& extent,
                                     source_position start, const std::vector<nested_function>& nested,
                                     const std::optional<source_position>& own_mark);

  private:
    /// A place where code goes on after something inside it has ended.
    struct continuation {
        source_position from;  ///< end of the inner region
        source_position limit; ///< end of the region that encloses it
    };

    void split_by_kind(const std::vector<source_region>& regions);
    source_position first_word(const source_extent& gap, code_cursor* cursor) const;
    void begin_behind_gaps();
    void find_continuations(const std::vector<nested_function>& nested);
    std::optional<source_position> place_without_source(const continuation& place) const;
    bool begin_at_else(source_position word, code_cursor* cursor);
    void add_joins(const std::vector<nested_function>& nested);
    void add_returns(const std::vector<nested_function>& nested);
    void merge_positions();
    std::vector<profile_block> count_positions();

    const source_text& source_;

    // The function that is being built; kept for their memory.
    source_position end_ = {};
    std::vector<source_region> code_;         ///< ascending by start, the longer first
    std::vector<source_extent> gaps_;         ///< ascending by start
    std::vector<source_extent> skipped_;      ///< ascending by start
    std::vector<continuation> continuations_; ///< ascending
    std::vector<source_position> found_;      ///< positions that are no starts of code regions
    std::vector<source_position> positions_;  ///< of all blocks but the last; ascending, each once
    std::vector<source_position> open_ends_;  ///< of the regions around a place, the innermost last
    std::vector<const source_region*> open_;  ///< the regions around a place, the innermost last
};

/// Counts the last block: `entries` when every other block was executed, else 0. vexcov counts one block more
/// of each function that has blocks left, so the percentage is 100 exactly when everything was executed.
void count_last_block(std::vector<profile_block>* blocks, std::uint64_t entries);
