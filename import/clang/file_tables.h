// The source files of programs: a table for each translation unit, from which its functions name their files.
//
//   section   tables, each at a multiple of 8
//   table     u32 0, u32 size of the body, u32 0, u32 version of the mapping - 1, the body, whose hash is
//             the key of the table
//   body      LEB number of names, LEB size unpacked, LEB size packed (0: is not packed), the names
//   name      LEB length, bytes
//
// From version 6 on name 0 is the directory of the compilation, from which the other names start; it has its
// index all the same.
#pragma once

#include "import/clang/hash_index.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The names of a translation unit's files, as numbers of `source_files`.
using file_table = std::vector<std::uint32_t>;

/// The files of all programs, each name once, and the lists of files that functions have.
class source_files {
  public:
    /// Begins with an object: reads its tables, whose keys are valid from here on, those of the last object
    /// no longer. Throws input_error where the section is damaged or of a version that is not supported.
    void read_tables(std::string_view section);

    /// The table of a key, null when the object has none.
    const file_table* table(std::uint64_t key) const;

    /// The number of a list of files; equal lists have equal numbers.
    std::uint32_t list_number(const std::vector<std::uint32_t>& files) {
        if (files.size() == 1 && files[0] < alone_.size() && alone_[files[0]] != hash_index::kNone)
            return alone_[files[0]]; // as most functions have no other
        return add_list(files);
    }

    /// A list by its number; valid until the next list is added.
    const std::uint32_t* list(std::uint32_t number) const { return listed_.data() + lists_[number].begin; }
    std::uint32_t list_size(std::uint32_t number) const { return lists_[number].size; }

    const std::string& name(std::uint32_t file) const { return *names_[file]; }

  private:
    struct file_list {
        std::size_t begin; ///< in `listed_`
        std::uint32_t size;
    };

    const file_table* decode(std::string_view packed, std::uint64_t key, bool has_directory);
    std::uint32_t file_number(std::string name);
    std::uint32_t add_list(const std::vector<std::uint32_t>& files);

    std::unordered_map<std::uint64_t, const file_table*> object_; ///< the tables of the current object by key
    std::unordered_map<std::uint64_t, file_table>
        decoded_[2]; ///< of all objects, without and with a directory
    std::unordered_map<std::string, std::uint32_t> numbers_;
    std::vector<const std::string*> names_; ///< of the files by number
    std::vector<std::uint32_t> listed_;
    std::vector<file_list> lists_;
    hash_index list_indices_;
    std::vector<std::uint32_t> alone_; ///< for each file the number of the list of it alone
};

/// `name`, from `directory` on when it is relative, without "." and "..".
std::string normal_source_name(std::string_view directory, std::string_view name);
