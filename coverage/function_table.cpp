#include "coverage/function_table.h"

#include "common/checked_alloc.h"
#include "common/number_format.h"
#include "driver/run_config.h"
#include "profile/module_list.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>

func** fileFuncs = nullptr;
std::int32_t numFileFuncs = 0;
func** fileFuncsCovered = nullptr;
std::int32_t numFileFuncsCovered = 0;
func** fileFuncsUncovered = nullptr;
std::int32_t numFileFuncsUncovered = 0;

static std::size_t slot_count = 0; ///< slots of fileFuncs

namespace {

/// Name and line, which make two functions duplicates.
struct func_key {
    std::string_view name;
    std::int32_t line;
    bool operator==(const func_key& other) const { return line == other.line && name == other.name; }
};

struct func_key_hash {
    std::size_t operator()(const func_key& key) const {
        return std::hash<std::string_view>()(key.name) * 31 + static_cast<std::size_t>(key.line);
    }
};

/// Slots of the functions in one half of the table, by name and line.
using slot_index = std::unordered_map<func_key, std::set<std::size_t>, func_key_hash>;

} // namespace

// Only files with ambiguous names ask for duplicates: the indexes are made at the first question.
static slot_index covered_index;
static slot_index uncovered_index;
static bool indexed = false;

static std::size_t slot_of(func** slot) {
    return static_cast<std::size_t>(slot - fileFuncs);
}

static func_key key_of(const func* function) {
    return {function->name ? function->name : "", function->line};
}

static void index_half(slot_index& index, func** half, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i)
        index[key_of(half[i])].insert(slot_of(half + i));
}

static void make_indexes() {
    if (indexed)
        return;
    index_half(covered_index, fileFuncsCovered, numFileFuncsCovered);
    index_half(uncovered_index, fileFuncsUncovered, numFileFuncsUncovered);
    indexed = true;
}

void allocFuncsTable(const COMP* first) {
    free_function_table();
    for (const COMP* comp = first; comp && same_file(comp, first); comp = comp->next)
        ++slot_count;
    fileFuncs = static_cast<func**>(zalloc(slot_count * sizeof(func*), "function table"));
    fileFuncsCovered = fileFuncs;
    fileFuncsUncovered = fileFuncs + slot_count;
}

void free_function_table() {
    for (std::size_t i = 0; i < slot_count; ++i)
        std::free(fileFuncs[i]);
    std::free(fileFuncs);
    fileFuncs = fileFuncsCovered = fileFuncsUncovered = nullptr;
    numFileFuncs = numFileFuncsCovered = numFileFuncsUncovered = 0;
    slot_count = 0;
    if (!indexed)
        return;
    // Clearing the indexes would keep, and walk at every file, the room that the largest file took.
    covered_index = slot_index();
    uncovered_index = slot_index();
    indexed = false;
}

/// True when a half of the table holds a function with this name and line; `*slot` receives its first slot.
static bool isDupName(const char* name, std::int32_t line, const slot_index& half, std::size_t* slot) {
    if (!name)
        return false;
    const auto found = half.find({name, line});
    if (found == half.end() || found->second.empty())
        return false;
    *slot = *found->second.begin();
    return true;
}

/// Takes the function in `slot` out of the uncovered half: the first uncovered function moves into its place.
static void drop_uncovered(std::size_t slot) {
    const std::size_t first = slot_of(fileFuncsUncovered);
    func* const dropped = fileFuncs[slot];
    uncovered_index[key_of(dropped)].erase(slot);
    if (first != slot) {
        std::set<std::size_t>& moved = uncovered_index[key_of(fileFuncs[first])];
        moved.erase(first);
        moved.insert(slot);
        fileFuncs[slot] = fileFuncs[first];
    }
    fileFuncs[first] = nullptr;
    std::free(dropped);
    ++fileFuncsUncovered;
    --numFileFuncsUncovered;
}

/// True when a duplicate that is there already absorbs the function.
static bool absorbed_by_duplicate(const char* name, std::int32_t line, std::int32_t covered,
                                  bool newInReference) {
    make_indexes();
    std::size_t slot = 0;
    if (newInReference || covered <= 0)
        return isDupName(name, line, uncovered_index, &slot) || isDupName(name, line, covered_index, &slot);
    if (isDupName(name, line, covered_index, &slot))
        return true;
    if (isDupName(name, line, uncovered_index, &slot))
        drop_uncovered(slot);
    return false;
}

static func* make_func(const char* name, std::int32_t line, std::int32_t blocks, std::int32_t covered) {
    func* function = static_cast<func*>(zalloc(sizeof(func), "function information"));
    function->name = name;
    function->line = line;
    function->blocks = blocks;
    function->covered = covered;
    function->percent = percent(covered, blocks);
    return function;
}

/// Says so when the two halves have grown into each other.
static void check_table() {
    // Deliberate: the covered functions are counted from the start of the uncovered ones, so only a table
    // that is beyond use is told of; the run goes on, since the pages of all other files are sound.
    if ((fileFuncsUncovered - fileFuncs) + numFileFuncsCovered < fileFuncsCovered - fileFuncs)
        // infeasible: begin
        std::printf("ERROR: corrupt function table. cvrd = %p (%d), uncvrd = %p (%d)\n",
                    static_cast<void*>(fileFuncsCovered), numFileFuncsCovered,
                    static_cast<void*>(fileFuncsUncovered), numFileFuncsUncovered);
    // infeasible: end
}

void addFunc(const char* name, bool checkDuplicates, std::int32_t line, std::int32_t blocks,
             std::int32_t covered, bool newInReference) {
    if (checkDuplicates && absorbed_by_duplicate(name, line, covered, newInReference))
        return;
    check_table();
    ++numFileFuncs;
    // In differential mode a function that the reference run knows and that has no new coverage is on neither
    // list.
    const bool isCovered = covered > 0 && !(compWithRef && newInReference);
    if (!isCovered && compWithRef && !newInReference)
        return;
    func** slot = isCovered ? fileFuncsCovered + numFileFuncsCovered++ : --fileFuncsUncovered;
    numFileFuncsUncovered += isCovered ? 0 : 1;
    *slot = make_func(name, line, blocks, covered);
    if (indexed)
        (isCovered ? covered_index : uncovered_index)[key_of(*slot)].insert(slot_of(slot));
}
