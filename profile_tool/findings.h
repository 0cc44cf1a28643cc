// What a check has found, by kind.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

enum finding_kind {
    FINDING_UNSORTED,   ///< a record whose key is lower than the one before: a report may miss it
    FINDING_DOUBLE,     ///< one whose key is the same: a report sees one of the two
    FINDING_NO_ROUTINE, ///< one that the static profile does not know: it is in no report
    FINDING_BLOCKS,     ///< one with fewer or more blocks than the static profile says
    FINDING_COUNTERS,   ///< one with a counter that is negative, has a fraction, or is not finite
    FINDING_POSITIONS,  ///< one with a block where its source has no text
    FINDING_MISSING,    ///< a source file that is not there
    FINDING_NEWER,      ///< one that was changed after the profile
    FINDING_PAGES,      ///< one whose pages have the names of another one's
    FINDING_KINDS
};

class findings {
  public:
    /// Notes one of a kind. `place` is asked for its text only while places are shown.
    void add(finding_kind kind, const std::function<std::string()>& place);

    bool is_empty() const;

    /// Prints the number of each kind that there is, and its first places, to standard output.
    void print() const;

  private:
    struct found {
        std::uint64_t count = 0;
        std::vector<std::string> places;
    };
    std::array<found, FINDING_KINDS> kinds_;
};
