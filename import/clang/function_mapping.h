// The regions of one function and the counters that they refer to.
//
//   mapping     LEB number of files, for each: LEB index into the file table; its place here is the file
//                 number of the regions
//               LEB number of expressions, for each: LEB left counter, LEB right counter
//               for each file number: LEB number of regions, the regions
//   counter     LEB; its low 2 bits are 0 zero, 1 counter of the profile, 2 left - right or 3 left + right of
//                 an expression, the rest is the index of the counter or expression
//   region      LEB head, LEB ..., LEB line, LEB column, LEB further lines, LEB end column; the line counts
//                 from the region before of the same file number; bit 31 of the end column makes it a gap
//
//   head                 region               what follows it
//   low 2 bits not 0     code                 -; the head is its counter
//   low 3 bits are 4     expansion            -; the rest is the file number that it leads to
//   0                    code, counter zero   -
//   2 << 3               skipped              -
//   4 << 3               branch               2 counters
//   5 << 3               decision             2 LEB
//   6 << 3               branch of decision   2 counters, 3 LEB
#pragma once

#include "import/clang/byte_reader.h"
#include "import/clang_export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Indices into a file table that a mapping begins with, and where they end.
struct mapping_files {
    std::vector<std::uint64_t> indices;
    std::size_t end = 0; ///< offset of what follows them in the mapping
};

/// Reads the files of `mapping` into `*files`. Throws input_error where it is damaged.
void read_mapping_files(std::string_view mapping, mapping_files* files);

/// Whether what follows the files of a mapping describes a function that its translation unit saw and did not
/// use: one region with the counter zero. Only functions with hash 0 are such.
bool is_unused_function(std::string_view mapping, const mapping_files& files);

/// The counters of a function. Null data stands for counters that are all zero, however many there are.
struct function_counters {
    const std::uint64_t* data;
    std::size_t size;
};

/// Decodes mappings; one object does it for all functions, since it keeps the memory.
class mapping_decoder {
  public:
    /// Replaces the regions and the count of `*function` by those of a mapping of `files` file numbers;
    /// `mapping` is what follows its files. Branches and decisions are left out. False where the mapping
    /// refers to counters that there are not: it is of another build. Throws input_error where the mapping is
    /// damaged.
    bool decode(std::string_view mapping, std::size_t files, const function_counters& counters,
                export_function* function);

  private:
    struct expression {
        std::uint64_t left;
        std::uint64_t right;
    };
    enum class progress : unsigned char { unknown, begun, known };
    struct memo {
        std::int64_t value;
        progress state;
    };
    /// What gives an expansion that leads to a file number its count.
    struct first_region {
        std::uint64_t counter;
        std::size_t leads_to; ///< file number; kNowhere: the counter counts
    };

    void decode_expressions(byte_reader* reader);
    void decode_regions(byte_reader* reader, std::size_t file, std::vector<export_region>* regions);
    std::uint64_t decode_head(std::uint64_t head, byte_reader* reader, export_region* region);
    std::uint64_t checked_counter(std::uint64_t counter);
    std::int64_t count_of_file(std::size_t file);
    std::int64_t count_of_counter(std::uint64_t counter);
    std::int64_t evaluate(std::uint64_t counter);
    std::optional<std::int64_t> known_value(std::uint64_t counter);
    memo* memo_of(std::uint64_t counter) {
        return &memos_[static_cast<std::size_t>((counter >> 2) * 2 + (counter & 1))];
    }

    static constexpr std::size_t kNowhere = SIZE_MAX;

    std::vector<expression> expressions_;
    std::vector<memo> memos_;            ///< two for each expression: as a difference and as a sum
    std::vector<std::uint64_t> pending_; ///< counters that wait for the ones behind them
    std::vector<first_region> first_;    ///< of each file number
    std::vector<std::size_t> way_;       ///< file numbers on the way to a count
    std::uint64_t needed_ = 0;           ///< counters of the profile that the mapping refers to
    function_counters counters_ = {};
};
