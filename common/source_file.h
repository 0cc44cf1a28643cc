// The text of the source file that is being processed.
//
// The scanner, the position table and the listing all need the whole text; it is read once and kept until the
// next file is asked for or it is released. A loader never holds more than one source file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Reads source files one at a time into memory that it keeps from file to file.
class source_loader {
  public:
    source_loader() = default;
    ~source_loader();
    source_loader(const source_loader&) = delete;
    source_loader& operator=(const source_loader&) = delete;

    /// The text of `path`, or false when it is not a regular file that can be opened. `*text` stays valid
    /// until the next call with another path or release(). Where it fails to open for another reason than
    /// that there is no such file for the user, "cannot read %s" is printed and the run, which goes
    /// on, ends with status 1 (pgt_Incomplete). A read that fails half-way ends the run with that message at
    /// once.
    bool load(const char* path, std::string_view* text);

    /// Looks up relative paths in `folder` from now on; empty: in the working directory, as at first.
    void set_folder(const std::string& folder);

    /// Forgets the text, so that the next load() reads the file anew.
    void release();

  private:
    void reserve(std::size_t size);
    bool read_all(int descriptor, std::size_t expected);

    std::string folder_;  ///< of relative paths, with a slash at its end; empty: the working directory
    std::string path_;    ///< of the text
    bool loaded_ = false; ///< path_ was looked at
    bool found_ = false;  ///< it is a regular file, and its text is here
    char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

/// The loader of the run, and its two functions.
source_loader& run_sources();
bool load_source(const char* path, std::string_view* text);
void release_source();
