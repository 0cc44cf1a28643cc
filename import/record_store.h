// The functions of all inputs, one entry for each source file, name and set of regions. Entries that come
// again are added up, so that memory grows with the program, not with the number of exports.
#pragma once

#include "import/main_file.h"
#include "import/source_region.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

/// A function as at least one input has it.
struct stored_function {
    std::uint32_t file; ///< index into record_store::files()
    std::uint32_t next; ///< next entry with the same hash; for the store only
    std::string name;
    std::uint64_t count; ///< entries, of all inputs
    source_extent extent;
    std::vector<source_region> regions;
};

class record_store {
  public:
    /// Adds a function; `file` and `name` are those of the profile. Takes what it needs of `function`.
    void add(const std::string& file, std::string_view name, const main_file_function& function);

    /// Source files in the order of first appearance.
    const std::vector<std::string>& files() const { return files_; }

    /// The entries. The caller may take their regions when nothing will be added any more.
    std::vector<stored_function>& functions() { return functions_; }
    const std::vector<stored_function>& functions() const { return functions_; }

  private:
    std::uint32_t file_index(const std::string& file);

    std::vector<std::string> files_;
    std::unordered_map<std::string, std::uint32_t> file_indices_;
    std::vector<stored_function> functions_;
    std::unordered_map<std::size_t, std::uint32_t> heads_; ///< hash -> first entry of its chain
};
