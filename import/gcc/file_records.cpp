#include "import/gcc/file_records.h"

#include <algorithm>
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
    record.block_count = static_cast<std::uint32_t>(function.last + 1);
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
