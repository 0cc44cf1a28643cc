// A set of lines of a source file, kept as ranges.
#pragma once

#include <vector>

class line_set {
  public:
    /// Adds the lines from `first` to `last`; none when `first` is greater. finish() must come before
    /// contains().
    void add(unsigned long first, unsigned long last);

    /// Sorts the ranges and joins those that overlap, so that nested blocks cost no more than flat ones.
    void finish();

    bool contains(unsigned long line) const { return !ranges_.empty() && is_in_range(line); }

  private:
    bool is_in_range(unsigned long line) const;

    /// Lines first to last, both included.
    struct range {
        unsigned long first;
        unsigned long last;
    };
    std::vector<range> ranges_; ///< sorted and disjoint once finish() was called
};
