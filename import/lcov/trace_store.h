// The source files of all traces with their lines and functions. What comes again is added up, so that memory
// grows with the program, not with the traces; and so are the instances of a template, if they are not to
// stay apart.
#pragma once

#include "import/lcov/trace_section.h"
#include "import/source_names.h"

#include <map>
#include <string>
#include <vector>

struct traced_file {
    std::vector<trace_line> lines;         ///< ascending, each once
    std::vector<trace_branch> branches;    ///< ascending by line and name, each once; none in files()
    std::vector<trace_function> functions; ///< ascending by line and name, each once

    // What was added since, in any order; at most about as much as is above.
    std::vector<trace_line> new_lines;
    std::vector<trace_branch> new_branches;
    std::vector<trace_function> new_functions;
};

class trace_store {
  public:
    /// `names` and `left_out`, which receives the source files outside of the root, must outlive this.
    /// `instances`: those of a template stay apart.
    trace_store(const source_names& names, left_out_sources* left_out, bool instances)
        : names_(names), left_out_(*left_out), instances_(instances) {}

    void add(const trace_section& section);

    /// Everything that was added, by the name in the profile; to be called once. Names of templates that come
    /// again in a file get their lines.
    std::map<std::string, traced_file>& files();

  private:
    const source_names& names_;
    left_out_sources& left_out_;
    bool instances_;
    std::vector<trace_function> arriving_; ///< the functions being added; kept for their memory
    std::map<std::string, traced_file> files_;
};
