// The functions of all programs, each once: the same function is in every program that it is linked into.
//
//   section   records, each at a multiple of 8; a linked program has one section of them, an object file
//             one for each record
//   record    u64 hash of the name, u32 size of the mapping, u64 hash of the structure, u64 key of the file
//             table, the mapping (function_mapping.h); fields are not aligned
#pragma once

#include "import/clang/byte_buffer.h"
#include "import/clang/file_tables.h"
#include "import/clang/function_mapping.h"
#include "import/clang/hash_index.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// A function as its program describes it.
struct function_record {
    std::uint64_t name;        ///< hash of it
    std::uint64_t structure;   ///< hash of the source text's structure, the same in the profile
    std::uint32_t files;       ///< list of source_files
    std::uint32_t input;       ///< the first program that has it, as its caller counts
    std::uint32_t name_number; ///< for function_records only
    bool unused;               ///< seen and not used by its translation unit: no counters stand for it
    std::string_view mapping;  ///< what it has behind its files
};

class function_records {
  public:
    /// Adds the records of an object's section with the tables that `files` holds for it. Returns the numbers
    /// of its functions in the order in which llvm-cov has them: one for each name, in the place of the first
    /// record of that name, and not of an unused function where there is another. Throws input_error where
    /// the section is damaged.
    std::vector<std::uint32_t> add(std::string_view section, source_files* files, std::uint32_t input);

    const numbered_store<function_record>& records() const { return records_; }

    /// Whether a record of this one's name is not of an unused function.
    bool is_used(const function_record& record) const { return name_of(record).used; }

    /// Whether no other record has this one's name.
    bool is_alone(const function_record& record) const { return name_of(record).records == 1; }

    /// Marks the name of a record as one that some record fits its counts by, and tells whether it was
    /// marked.
    void set_matched(const function_record& record) { names_[record.name_number].matched = true; }
    bool is_matched(const function_record& record) const { return name_of(record).matched; }

    /// Takes `name` as that of the records with its hash; false: there are none.
    bool set_name(std::uint64_t hash, std::string_view name);

    /// The name of a record; empty as long as it is not known.
    std::string_view name(const function_record& record) const { return name_of(record).text; }

    /// How many names of records are not known yet.
    std::size_t nameless() const { return nameless_; }

  private:
    struct function_name {
        std::uint64_t hash;
        std::string_view text; ///< empty: is not known
        bool used;
        bool matched;
        std::uint32_t first;   ///< record that has it
        std::uint32_t records; ///< that have it
        std::uint32_t object;  ///< the last one with a record of it, counted from 1
        std::uint32_t place;   ///< of the record in that object
    };

    const function_name& name_of(const function_record& record) const { return names_[record.name_number]; }
    std::uint32_t name_index(std::uint64_t hash) const {
        return name_indices_.find(hash, [&](std::uint32_t number) { return names_[number].hash == hash; });
    }
    bool is_same(std::uint32_t number, const function_record& record) const;
    std::uint32_t find_record(const function_record& record) const;
    std::uint32_t add_record(const function_record& record);
    void place_record(std::uint32_t record, std::vector<std::uint32_t>* object);

    numbered_store<function_record> records_;
    std::uint32_t expected_ = 0; ///< where the next record likely is: programs have them in similar orders
    numbered_store<function_name> names_;
    hash_index name_indices_; ///< by the hashes of the names
    hash_index others_;       ///< records that are not the first of their name
    byte_store bytes_;        ///< mappings and names
    std::size_t nameless_ = 0;
    std::uint32_t objects_ = 0;
    mapping_files head_;                ///< of the record being read; kept for its memory, as is the next
    std::vector<std::uint32_t> listed_; ///< its files
};
