// The sum of records of one function that agree: same names, blocks at the same places (but for those that
// not every run has, see block_tail.h), same routines.
//
// Counts are added up in 64 bits and end at all ones. What nothing here knows the meaning of (words,
// addresses, value areas) stays when it is the same in all records, and is 0 otherwise. So neither the order
// of the records nor any grouping of them changes the sum.
#pragma once

#include "profile/dpi_content.h"
#include "profile/dpi_stream_writer.h"
#include "profile_tool/merge_source.h"

#include <optional>
#include <string>
#include <vector>

class record_sum {
  public:
    /// Begins with the present record of a source. False when a name or a count of it cannot be read;
    /// `*error` tells.
    bool start(merge_source& source, std::string* error);

    /// Whether the present record of a source, which has the same key, agrees with the sum. A name that
    /// cannot be read does not; the source's error() tells.
    bool agrees(merge_source& source) const;

    /// Adds a record that agrees. False as for start().
    bool add(merge_source& source, std::string* error);

    const merge_origin& origin() const { return origin_; }
    const std::string& file() const { return file_; }
    const std::string& function() const { return function_; }

    /// True when `a` is to count and not `b`, which does not agree with it: its origin is newer. Of two that
    /// are equally old the choice depends on nothing but their blocks.
    static bool is_newer(const record_sum& a, const record_sum& b);

    /// Hands the sum to a writer; sums of an intermediate profile with their origins. False when it has no
    /// room.
    bool write(DPI_STREAM_WRITER& writer, bool with_origin);

  private:
    std::string shape() const;
    bool has_blocks_of(DPI_RECORD record) const;
    void keep_equal(const DPI_CONTENT& other);
    bool keep_equal_table(merge_source& source);

    DPI_CONTENT content_;
    DPI_CONTENT other_; ///< the record being added; kept for its memory
    merge_origin origin_;
    std::string file_;
    std::string function_;
    std::vector<std::optional<std::string>> routines_; ///< as DPI_RECORD_NAMES has them
    bool has_vtbl_ = false;
    std::string vtbl_;
};
