// The objects of a program: finds notes and counter files and puts together what belongs together.
#pragma once

#include "import/gcc/object_files.h"

#include <string>
#include <vector>

/// What gcov is to read. Paths are absolute.
struct gcc_object {
    std::string notes;    ///< the .gcno file
    std::string counters; ///< the .gcda file; empty: the object was never run
    compiler_version version;
};

/// All objects, and what is wrong with some.
struct object_list {
    std::vector<gcc_object> objects;        ///< in the order of their paths
    std::vector<std::string> without_notes; ///< counter files; they are left out
    std::vector<std::string> damaged_notes; ///< notes files; they are left out
    std::vector<std::string> rebuilt;       ///< counter files of another compilation: their counts are lost
    std::vector<std::string> damaged_counters; ///< counter files that are empty, cut short or none
    std::vector<std::string> closed;           ///< directories that could not be read
    std::vector<std::string> foreign;          ///< notes files of compilers without gcov; they are left out
};

/// A path for messages: relative to the working directory when it lies below, control characters made
/// visible.
std::string shown_path(const std::string& path);

class object_search {
  public:
    /// Adds a directory with everything below it, or one .gcno or .gcda file. A path that does not exist, and
    /// a file of another kind, end the run with a message.
    void add(const std::string& path);

    /// Adds the notes of a directory and none of its counters: those are of other runs. Or one .gcno file.
    void add_notes(const std::string& path);

    /// Whether no notes were added.
    bool without_notes() const { return notes_.empty(); }

    /// Pairs counter files with notes of the same name: those beside them, else those whose path has the
    /// longest end in common, among them those of the same compilation. Several counter files may belong to
    /// one object, whose counts then add up. Notes without counters are objects that never ran.
    object_list pair();

  private:
    void add_directory(const std::string& path);

    std::vector<std::string> notes_;    ///< absolute paths
    std::vector<std::string> counters_; ///< absolute paths
    std::vector<std::string> closed_;
};
