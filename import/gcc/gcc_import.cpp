#include "import/gcc/gcc_import.h"

#include "common/fatal.h"
#include "common/message.h"
#include "import/gcc/file_records.h"
#include "import/gcc/gcov_program.h"
#include "import/gcc/gcov_runs.h"
#include "import/gcc/json_input.h"
#include "import/gcc/line_profile.h"
#include "import/gcc/line_store.h"
#include "import/gcc/notes_sources.h"
#include "import/gcc/object_search.h"
#include "import/gcc/source_selection.h"
#include "import/source_names.h"
#include "import/write_pair.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

constexpr std::size_t kNamesShown = 20; ///< of one warning; the rest is counted

/// Warns of objects or files, of which there may be one or many.
static void warn_of(std::vector<std::string> names, const char* one, const char* many) {
    if (names.empty())
        return;
    std::sort(names.begin(), names.end());
    std::string list;
    for (std::size_t i = 0; i < names.size() && i < kNamesShown; ++i)
        list += "\n   " + shown_path(names[i]);
    if (names.size() > kNamesShown)
        list += "\n   and " + std::to_string(names.size() - kNamesShown) + " more";
    print_warning("%zu %s:%s", names.size(), names.size() == 1 ? one : many, list.c_str());
}

/// Warns of all that is wrong with single objects. True when gcov could read each of them.
static bool warn_of_objects(const object_list& list, gcov_troubles troubles) {
    std::vector<std::string> damaged = list.damaged_counters;
    for (std::string& counters : troubles.damaged) {
        if (!std::binary_search(list.rebuilt.begin(), list.rebuilt.end(), counters) &&
            !std::binary_search(list.damaged_counters.begin(), list.damaged_counters.end(), counters))
            damaged.push_back(std::move(counters));
    }
    warn_of(list.closed, "directory could not be read and was passed over",
            "directories could not be read and were passed over");
    warn_of(
        list.rebuilt,
        "object was compiled again after it ran, so that its counts are lost (run the tests again)",
        "objects were compiled again after they ran, so that their counts are lost (run the tests again)");
    warn_of(
        damaged,
        "counter file is cut short or damaged; what gcov could not read of it counts as not executed",
        "counter files are cut short or damaged; what gcov could not read of them counts as not executed");
    warn_of(list.without_notes, "counter file has no notes file (.gcno) and was left out",
            "counter files have no notes file (.gcno) and were left out");
    warn_of(list.damaged_notes,
            "notes file is cut short or damaged and was left out (compile this object again)",
            "notes files are cut short or damaged and were left out (compile these objects again)");
    warn_of(list.foreign, "object was compiled by clang, or by a GCC before 9, and was left out",
            "objects were compiled by clang, or by a GCC before 9, and were left out");
    const bool complete = troubles.unreadable.empty();
    warn_of(std::move(troubles.unreadable), "object could not be read by gcov and was left out",
            "objects could not be read by gcov and were left out");
    return complete;
}

static void warn_of_figures(const line_profile& made, std::uint64_t clamped) {
    const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
    if (clamped != 0)
        print_warning(clamped == 1
                          ? "%llu count was negative or too large and was set to 0 or to the largest count; "
                            "threads that count at the same time do that (build with -fprofile-update=atomic)"
                          : "%llu counts were negative or too large and were set to 0 or to the largest "
                            "count; threads that count at the same time do that (build with "
                            "-fprofile-update=atomic)",
                      number(clamped));
    warn_of_unreadable_sources(made.unreadable);
    if (made.misplaced.number != 0)
        print_warning(made.misplaced.number == 1
                          ? "%llu block of %s lies beyond the end of its file; the sources have changed "
                            "since the program was built (build it again, and run the tests)"
                          : "%llu blocks lie beyond the end of their file, the first of %s; the sources have "
                            "changed since the program was built (build it again, and run the tests)",
                      made.misplaced.shown(), printable(made.misplaced.first).c_str());
}

/// Takes note of the sources that gcov is told to pass over, those not below `prefix`. Most objects name the
/// same ones. False when some of them are wanted: links lead to them.
static bool note_left_out(const std::vector<gcc_object>& objects, const std::string& prefix,
                          source_selection* sources) {
    std::unordered_set<std::string> seen;
    bool all_unwanted = true;
    for (const gcc_object& object : objects) {
        find_sources(object.notes, [&](std::string_view source) {
            if (seen.emplace(source).second && sources->name_of("", source))
                all_unwanted = all_unwanted && source.starts_with(prefix + "/");
        });
    }
    return all_unwanted;
}

/// Among objects of GCC, those that clang left behind in the same tree are passed over. Alone they stay, and
/// end the run with a message.
static void leave_out_foreign(object_list* list) {
    std::vector<gcc_object>& objects = list->objects;
    const auto foreign = std::stable_partition(
        objects.begin(), objects.end(), [](const gcc_object& object) { return has_gcov(object.version); });
    if (foreign == objects.begin())
        return;
    for (auto object = foreign; object != objects.end(); ++object)
        list->foreign.push_back(object->notes);
    objects.erase(foreign, objects.end());
}

/// Reads every input into the store. False when some object could not be read, which has been said.
static bool read_inputs(const import_options& options, source_selection* sources, line_store* store) {
    const auto add = [store](const gcov_document& document) { store->add(document); };
    object_search search;
    if (options.inputs.empty())
        search.add(".");
    for (const std::string& input : options.inputs) {
        if (is_json_input(input))
            read_json_input(input, add);
        else
            search.add(input);
    }
    for (const std::string& path : options.objects)
        search.add_notes(path);
    if (!options.objects.empty() && search.without_notes())
        end_with_error(
            "no notes of the compiler (.gcno) were found; name the folder of the objects with -objects");
    object_list list = search.pair();
    leave_out_foreign(&list);
    gcov_programs programs(options.gcov);
    const unsigned jobs = options.jobs == 0 ? default_jobs() : options.jobs;
    std::string prefix = sources->prefix();
    if (!prefix.empty() && !note_left_out(list.objects, prefix, sources))
        prefix.clear();
    return warn_of_objects(list, run_gcov(list.objects, &programs, jobs, prefix, add));
}

void run_gcc_import(const import_options& options) {
    source_selection sources(options.root, options.all_sources);
    line_store store(&sources, options.instances);
    const bool complete = read_inputs(options, &sources, &store);
    if (store.functions().empty()) {
        sources.left_out().check_root();
        end_with_error("%s: no functions were found; build the program with --coverage",
                       shown_inputs(options).c_str());
    }
    const std::uint64_t clamped = store.clamped();
    line_profile made = build_line_profile(&store, sources.names());
    if (pgt_IsIncomplete()) // a source that could not be read would have changed the blocks
        pgt_Exit(1);
    write_pair(std::move(made.profile), options);
    warn_of_figures(made, clamped);
    sources.left_out().print();
    if (!complete)
        pgt_Incomplete();
}
