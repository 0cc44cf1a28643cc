#include "import/gcc/file_records.h"

#include "import/import_message.h"
#include "import/source_names.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

/// Called ones first, so that the first block of the record is an entry that was executed.
static void order_by_name(std::vector<placed_function>* functions) {
    std::stable_sort(functions->begin(), functions->end(),
                     [](const placed_function& a, const placed_function& b) {
                         return std::tuple(std::string_view(a.name), !a.called, a.line) <
                                std::tuple(std::string_view(b.name), !b.called, b.line);
                     });
}

/// Adds the blocks of `other`. The one of the two last blocks that is not the last any more goes.
static void join(placed_function* function, placed_function other) {
    const source_position last = function->blocks[function->last].position;
    if (last < other.blocks[other.last].position) {
        function->blocks[function->last] = other.blocks[other.last];
    }
    other.blocks.erase(other.blocks.begin() + static_cast<std::ptrdiff_t>(other.last));
    function->blocks.insert(function->blocks.end(), other.blocks.begin(), other.blocks.end());
    function->line = std::min(function->line, other.line);
}

static void count_last(placed_function* function) {
    bool complete = true;
    for (std::size_t i = 0; i < function->blocks.size(); ++i)
        complete = complete && (i == function->last || function->blocks[i].count != 0);
    function->blocks[function->last].count = complete ? function->blocks.front().count : 0;
}

static void add_record(std::uint32_t file, placed_function function, PGOPTI_PROFILE* profile) {
    count_last(&function);
    PGOPTI_ROUTINE record = {};
    record.file = file;
    record.name = std::move(function.name);
    record.line = function.line;
    record.block_count = static_cast<std::uint32_t>(function.blocks.size());
    record.has_record = function.called;
    if (record.has_record)
        record.blocks = stored_blocks(function.blocks);
    profile->routines.push_back(std::move(record));
}

void add_file_records(std::uint32_t file, std::vector<placed_function> functions, PGOPTI_PROFILE* profile) {
    order_by_name(&functions);
    for (std::size_t i = 0; i < functions.size();) {
        placed_function function = std::move(functions[i]);
        for (++i; function.called && i < functions.size() && functions[i].name == function.name; ++i)
            join(&function, std::move(functions[i]));
        add_record(file, std::move(function), profile);
    }
}

/// Compares keys "file'function'" without building them.
static int compare_keys(std::string_view a_file, std::string_view a_name, std::string_view b_file,
                        std::string_view b_name) {
    const auto byte_at = [](std::string_view file, std::string_view name, std::size_t i) {
        if (i < file.size())
            return static_cast<int>(static_cast<unsigned char>(file[i]));
        i -= file.size();
        if (i == 0 || i == name.size() + 1)
            return static_cast<int>('\'');
        return i <= name.size() ? static_cast<int>(static_cast<unsigned char>(name[i - 1])) : -1;
    };
    for (std::size_t i = 0;; ++i) {
        const int a = byte_at(a_file, a_name, i);
        const int b = byte_at(b_file, b_name, i);
        if (a != b || a == -1)
            return a - b;
    }
}

void sort_records(PGOPTI_PROFILE* profile) {
    const std::vector<std::string>& files = profile->files;
    std::stable_sort(profile->routines.begin(), profile->routines.end(),
                     [&files](const PGOPTI_ROUTINE& a, const PGOPTI_ROUTINE& b) {
                         return compare_keys(files[a.file], a.name, files[b.file], b.name) < 0;
                     });
}

void check_record_names(const PGOPTI_PROFILE& profile) {
    std::set<std::string> unwritable;
    for (const std::string& file : profile.files) {
        if (!can_be_written(file))
            unwritable.insert("source file \"" + printable(file) + "\"");
    }
    for (const PGOPTI_ROUTINE& record : profile.routines) {
        if (!can_be_written(record.name))
            unwritable.insert("function \"" + printable(record.name) + "\"");
    }
    if (unwritable.empty())
        return;
    std::string list;
    for (const std::string& name : unwritable)
        list += "\n   " + name;
    import_error(
        "names that are empty or have white space or control characters in them cannot be written to the "
        "static profile:%s",
        list.c_str());
}
