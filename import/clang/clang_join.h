// From the programs of a build and the profiles of their runs to functions with counts.
//
// The result does not depend on the order of the files: the counters of all profiles are added up, and each
// function is handed out once, whatever number of programs it was linked into.
#pragma once

#include "import/clang/counter_store.h"
#include "import/clang/elf_file.h"
#include "import/clang/file_tables.h"
#include "import/clang/function_records.h"
#include "import/clang/hash_index.h"
#include "import/clang/name_groups.h"
#include "import/clang/profile_names.h"
#include "import/clang/seen_texts.h"
#include "import/clang_export.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

class clang_join {
  public:
    /// Adds what follows as a new input: a program, an object file or an archive. `input` names it in
    /// messages.
    void begin_input(const std::string& input);

    /// Adds an object of the current input. Throws input_error where its sections are damaged.
    void add_object(const mapped_sections& object);

    /// Adds a profile, the bytes of its file. Throws input_error where it is damaged or not supported.
    void add_profile(std::string_view file);

    /// Whether programs lost the names of their functions. Profiles have them, too, and are read again for
    /// that.
    bool lacks_names() const { return records_.nameless() != 0; }

    /// Takes names from a profile, the bytes of its file.
    void add_names(std::string_view file);

    /// The build IDs in the profiles, which tell what programs they are of.
    const std::set<std::string>& profiled_ids() const { return profiled_ids_; }

    /// Whether no object was added.
    bool without_objects() const { return records_.records().empty(); }

    /// Calls `on_function` for each function, with the first input that it is in, as messages show it. The
    /// function object is `*memory`. Then writes the warnings about what did not fit together. Damaged
    /// records end the run with a message.
    void hand_out(const std::function<void(const export_function&, const std::string& input)>& on_function,
                  export_function* memory);

  private:
    struct input {
        std::string name;                   ///< as messages show it
        std::set<std::string> ids;          ///< build IDs
        std::vector<std::uint32_t> records; ///< of `records_`
    };

    /// Which names of a section are looked at, pass for pass.
    enum class name_choice {
        promising, ///< new ones that are likely asked for
        unseen,    ///< all new ones
        all        ///< also what was seen before, as another's hash may have been taken for its own
    };

    void read_names(std::string_view section);
    bool read_block(std::string_view names, name_choice choice);
    bool is_wanted(const function_record& record) const;
    void name_files(const function_record& record, export_function* function) const;
    bool was_handed_out(const function_record& record) const;
    bool join(std::uint32_t number, export_function* function);
    bool decode(const function_record& record, const function_counters& counters, export_function* function);
    void warn_of_mismatches() const;
    void print_warnings() const;

    source_files files_;
    function_records records_;
    counter_store counters_;
    seen_texts seen_names_; ///< names that were hashed, and blocks of names
    name_groups name_groups_;
    byte_buffer unpacked_; ///< names being read; kept for its memory
    std::vector<input> inputs_;
    std::set<std::string> profiled_ids_;
    mapping_decoder decoder_;
    hash_index handed_out_;                 ///< records by their names and lists of files
    std::vector<std::uint32_t> mismatched_; ///< records whose names the profiles know from other functions
};
