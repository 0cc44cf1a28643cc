// The gcov that can read an object: it must come from the GCC that compiled it.
#pragma once

#include "import/gcc/object_search.h"

#include <map>
#include <string>
#include <utility>

/// Whether some gcov can read objects of this compiler: not those of clang, nor of a GCC before JSON.
bool has_gcov(const compiler_version& version);

class gcov_programs {
  public:
    /// `given`: the program that the command line names; empty for none.
    explicit gcov_programs(std::string given) : given_(std::move(given)) {}

    /// The program for an object: the given one; else gcov-MAJOR, or a gcov of that major version. Where
    /// there is none, and for objects of clang, ends the run with a message that names both versions.
    const std::string& program_for(const gcc_object& object);

  private:
    std::string find(const gcc_object& object) const;

    std::string given_;
    std::map<unsigned, std::string> known_; ///< by major version
};
