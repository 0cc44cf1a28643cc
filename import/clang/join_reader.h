// Reads files into a join. What is wrong with a file ends the run with a message that names it.
#pragma once

#include "import/clang/byte_buffer.h"
#include "import/clang/clang_join.h"
#include "import/clang/file_bytes.h"

#include <string>
#include <vector>

class join_reader {
  public:
    /// Reads a profile. One without a byte gets a warning only: a process that was killed leaves such.
    void read_profile(const std::string& path);

    /// Reads the profile again, for names that programs have lost.
    void read_names(const std::string& path);

    /// Reads a program, an object file or an archive. One that was found, not `named`, is passed over unless
    /// it is instrumented.
    void read_program(const std::string& path, bool named);

    /// Reads those of the files that wrote the profiles by their build IDs. IDs without a file get a warning;
    /// it is an error when no file is found at all.
    void find_programs(const std::vector<std::string>& files);

    /// Frees the memory of the files; to be called when all were read.
    void release_files() {
        sections_ = {};
        profile_ = {};
    }

    /// Ends the run with a message when no program with coverage mapping was read.
    void check_programs() const;

    clang_join& join() { return join_; }

  private:
    std::string_view whole(file_bytes* file);
    void read_object(const file_part& file, const std::string& path, bool named);
    void read_archive(file_bytes* file, const std::string& path);

    clang_join join_;
    mapped_sections sections_; ///< of the object being read; kept for their memory, as is the next
    byte_buffer profile_;      ///< the one being read
    std::string passed_over_;  ///< the first program that was found and is not instrumented, and why
};
