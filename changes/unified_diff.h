// Reader of unified diffs: which lines of which files a change adds.
//
//   diff --git a/src/one.c b/src/one.c      begins a file; what follows up to "---" are git's own headers:
//   old mode, new mode, new file mode, deleted file mode, rename from, rename to, copy from, copy to,
//   similarity index, dissimilarity index, index, Binary files ... differ, GIT binary patch
//   --- a/src/one.c                         begins a file where there is no such line; /dev/null for none
//   +++ b/src/one.c
//   @@ -3,2 +3,4 @@ anything                begins a hunk: first line and number of lines, before and after
//   " ", "-", "+" and "\"                   a line of both, of the old file, of the new one, and a remark
//
// Names in double quotes have the escapes of C. Text in front of, between and behind the files is passed
// over, as git show and git format-patch write some. Not read are coloured diffs, those of merges against
// several parents and those of several commits in a row, whose lines belong to different states of a file.
//
// A name loses its prefix: of one file that changes the two names are the same but for it, whatever it is.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Lines `first` to `last`, both included.
struct line_range {
    std::uint32_t first;
    std::uint32_t last;

    bool operator==(const line_range&) const = default;
};

/// Adds a line behind those of ascending ranges.
void add_line(std::vector<line_range>* ranges, std::uint32_t line);

enum class file_change { modified, added, deleted, renamed, copied };

/// A file that a diff changes.
struct changed_file {
    std::string name;     ///< without prefix; of a deleted file the one that it had
    std::string old_name; ///< of a renamed or copied file, else empty
    file_change change = file_change::modified;
    bool binary = false;
    std::vector<line_range> lines; ///< lines of the new file that are new or changed; ascending, apart
};

/// Names lose what their two sides do not have in common.
constexpr int kDetectPrefix = -1;

/// Largest number of folders that -strip can take away.
constexpr int kMostStripped = 100;

/// Takes a diff piece by piece. Memory grows with the number of files and of ranges only.
class unified_diff_reader {
  public:
    /// `strip`: number of leading folders that names lose, or kDetectPrefix. Names of renamed and copied
    /// files, which git gives without a prefix, lose one less.
    explicit unified_diff_reader(int strip = kDetectPrefix);
    ~unified_diff_reader();
    unified_diff_reader(const unified_diff_reader&) = delete;
    unified_diff_reader& operator=(const unified_diff_reader&) = delete;

    /// Takes the next piece. False when the diff is damaged or cannot be used: see fault(); nothing more may
    /// be fed then.
    bool feed(std::string_view piece);

    /// The end of the diff. False when it is damaged. A text of nothing but white space is a diff without
    /// files.
    bool finish();

    /// What is wrong, to follow the name of the input, such as ", line 3: this is a diff of a merge".
    const std::string& fault() const;

    /// The files in the order of the diff; each name once, but for a deleted file that comes again as another
    /// kind. To be asked after finish().
    std::vector<changed_file> take_files();

  private:
    class state;
    std::unique_ptr<state> state_;
};
