// Reader of the JSON that "llvm-cov export -format=text" writes.
//
// The text is read in pieces and handed out one function at a time, so that memory is bounded by the largest
// function, not by the export. Keys may stand in any order; unknown ones are skipped. Every fault of the
// input (truncated, not JSON, not such an export, numbers of the wrong type) ends the run with a message.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Indices into the numbers of a region, in the order of the export.
enum export_region_field {
    kLineStart,
    kColumnStart,
    kLineEnd,
    kColumnEnd,
    kExecutionCount,
    kFileID,
    kExpandedFileID,
    kKind,
    kRegionFields,
};

/// The numbers of one region as they stand in the export, unchecked; those beyond 64 bits are clamped.
using export_region = std::array<std::int64_t, kRegionFields>;

/// Names in the order of addition. An emptied list keeps its memory for the names that follow.
class name_list {
  public:
    void clear() {
        text_.clear();
        ends_.clear();
    }
    void add(std::string_view name) {
        text_ += name;
        ends_.push_back(text_.size());
    }
    std::size_t size() const { return ends_.size(); }
    std::string_view at(std::size_t index) const {
        const std::size_t begin = index == 0 ? 0 : ends_.at(index - 1);
        return std::string_view(text_).substr(begin, ends_.at(index) - begin);
    }

  private:
    std::string text_;              ///< the names, one behind the other
    std::vector<std::size_t> ends_; ///< of each name in the text
};

/// One function of the export, unchecked but complete: every key was there.
struct export_function {
    std::string name;
    std::int64_t count;
    name_list filenames;
    std::vector<export_region> regions;
};

/// Reads one whole export from `stream`, which stays open, and calls `on_function` for each of its functions.
/// The function object is `*memory` and is reused after the call; whoever reads several exports hands the
/// same one to all, so that their number does not show in the memory taken. `input` names the export in
/// messages.
void read_clang_export(std::FILE* stream, const std::string& input,
                       const std::function<void(const export_function&)>& on_function,
                       export_function* memory);
