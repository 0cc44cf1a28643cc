// The functions of all objects with the counts of their lines. What comes again is added up, so that memory
// grows with the source text of the program, not with the number of objects or of a template's instances.
#pragma once

#include "import/gcc/gcov_document.h"
#include "import/gcc/line_owners.h"
#include "import/gcc/source_selection.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// A line within one function.
struct counted_line {
    std::uint32_t line;
    bool complete;       ///< in some copy or instance it has a count and no unexecuted block
    bool unexecuted;     ///< in some copy a block was not executed, those of exception paths aside
    std::uint64_t count; ///< executions, of all copies
};

/// A function: its copies in all objects, for a constructor or destructor its variants, and for a template
/// its instances, if they are not to stay apart.
struct counted_function {
    std::uint32_t file;              ///< index into line_store::files()
    std::uint32_t next;              ///< next function with the same hash; for the store only
    bool is_template;                ///< stands for all instances
    std::string name;                ///< the smallest mangled name, or the one that instances share
    std::string demangled;           ///< or again the name that instances share
    source_extent extent;            ///< from its name to its closing brace; line 0: the code of no function
    std::uint64_t entries;           ///< executions, of all copies
    std::vector<counted_line> lines; ///< ascending, each once
    std::vector<counted_line> more;  ///< added since, in any order; for the store only
};

class line_store {
  public:
    /// `sources` must outlive this. `instances`: those of a template stay apart.
    line_store(source_selection* sources, bool instances) : sources_(*sources), instances_(instances) {}

    /// Adds what one object has. Neither the order of the calls nor that of the functions matters, but for
    /// the order of files() and functions().
    void add(const gcov_document& document);

    /// Names in the profile.
    const std::vector<std::string>& files() const { return files_; }

    /// Everything that was added.
    std::vector<counted_function>& functions();

    /// Unites the friends of class templates, unless instances stay apart; to be called when everything was
    /// added. Names of templates that come again in a file get their lines.
    void unite_instances();

    /// Counts that were clamped.
    std::uint64_t clamped() const { return clamped_; }

  private:
    /// A line of the document on its way into a function.
    struct arriving_line {
        std::uint32_t function; ///< index into functions_
        counted_line counted;
    };

    std::uint32_t file_index(const std::string& name);
    std::uint32_t function_index(std::uint32_t file, std::string_view demangled, source_position start);
    std::uint32_t add_function(const gcov_document& document, const gcov_function& function,
                               std::uint32_t file);
    void add_file(const gcov_document& document, const gcov_file& file, std::uint32_t index);
    void unite_friends();
    void gather_lines(const gcov_document& document, const gcov_file& file, std::uint32_t index);

    source_selection& sources_;
    bool instances_;
    line_owners owners_;
    std::vector<std::string> files_;
    std::unordered_map<std::string, std::uint32_t> file_indices_;
    std::vector<counted_function> functions_;
    std::unordered_map<std::uint64_t, std::uint32_t> heads_; ///< hash -> first function of its chain
    std::uint64_t clamped_ = 0;

    // The file being added; kept for their memory.
    std::string name_;                  ///< of a function, find_shared_name's
    std::vector<std::uint32_t> stored_; ///< for each function of the file its index in functions_
    std::vector<arriving_line> arriving_;
    std::vector<counted_line> of_function_; ///< the arriving lines of one function
};
