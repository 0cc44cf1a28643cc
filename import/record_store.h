// The functions of all inputs. What comes again is added up, so that memory grows with the source text of the
// program, not with the number of exports or of a template's instances.
#pragma once

#include "import/main_file.h"
#include "import/source_region.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

/// A function as at least one input has it, or all instances of a template.
struct stored_function {
    std::uint32_t file; ///< index into record_store::files()
    std::uint32_t next; ///< next entry with the same hash; for the store only
    bool is_template;   ///< the entry of all instances with its name and start
    std::string name;
    std::uint64_t count; ///< entries, of all inputs
    source_extent extent;
    std::vector<source_region> regions; ///< as main_file_function has them
    std::vector<source_region> more;    ///< of instances that differ, in any order; for the store only
};

class record_store {
  public:
    /// Adds a function; `file` and `name` are those of the profile. There is one entry for each file, name
    /// and set of regions; the regions are added up. Takes what it needs of `function`.
    void add(const std::string& file, std::string_view name, const main_file_function& function);

    /// Adds an instance of a template, whose name all instances share. There is one entry for each file, name
    /// and start, with the regions that any instance has: a part of the text that an instance does not have,
    /// as a condition at compile time can make it, gets no counts from that one.
    void add_instance(const std::string& file, std::string_view name, const main_file_function& function);

    /// Unites the instances, and the friends of class templates; to be called when everything was added.
    /// Names that come again in a file get their lines.
    void unite_instances();

    /// Source files in the order of first appearance.
    const std::vector<std::string>& files() const { return files_; }

    /// The entries. The caller may take their regions when nothing will be added any more.
    std::vector<stored_function>& functions() { return functions_; }
    const std::vector<stored_function>& functions() const { return functions_; }

  private:
    std::uint32_t file_index(const std::string& file);
    void append(std::uint32_t file, std::string_view name, const main_file_function& function,
                std::uint32_t* head);
    void unite_friends();

    std::vector<std::string> files_;
    std::unordered_map<std::string, std::uint32_t> file_indices_;
    std::uint32_t last_file_ = 0; ///< of the last function: the next one is often there, too
    std::vector<stored_function> functions_;
    std::unordered_map<std::uint64_t, std::uint32_t> heads_; ///< hash -> first entry of its chain
    std::vector<source_region> instance_; ///< the regions being added; kept for their memory
};
