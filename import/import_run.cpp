#include "import/import_run.h"

#include "common/fatal.h"
#include "common/file_ptr.h"
#include "common/message.h"
#include "common/remedy.h"
#include "demangle/shared_name.h"
#include "import/clang/clang_inputs.h"
#include "import/clang_export.h"
#include "import/gcc/gcc_import.h"
#include "import/import_options.h"
#include "import/lcov/lcov_import.h"
#include "import/main_file.h"
#include "import/profile_data.h"
#include "import/record_store.h"
#include "import/source_names.h"
#include "import/write_pair.h"

#include <cerrno>
#include <cstdio>
#include <string>

namespace {

/// What has been read so far.
struct collected {
    collected(const std::string& root, bool keep_instances) : instances(keep_instances), left_out(root) {}

    bool instances; ///< those of a template stay apart
    record_store store;
    left_out_sources left_out;
    std::uint64_t empty = 0;           ///< functions without a counted region
    export_function function = {};     ///< the one being read; kept for its memory, as is the next
    main_file_function extracted = {}; ///< the one being added
    std::string path;    ///< of the last function's source file: the next one is often there, too
    std::string file;    ///< its name in the profile
    bool wanted = false; ///< it belongs into the profile
    std::string name;    ///< of the function being added, shared by all instances; kept for its memory
};

} // namespace

static void collect_function(const export_function& function, const std::string& input,
                             const source_names& names, main_file_function* extracted, collected* all) {
    if (!extract_main_file(function, input, extracted)) {
        ++all->empty;
        return;
    }
    if (all->path != extracted->file) {
        all->path = extracted->file;
        all->file = names.name_in_profile(all->path);
        all->wanted = names.is_wanted(all->file);
        if (!all->wanted)
            all->left_out.add(all->file);
    }
    if (!all->wanted)
        return;
    const std::string_view name = without_local_prefix(function.name);
    if (all->instances)
        all->store.add(all->file, name, *extracted);
    else if (find_shared_name(name, &all->name))
        all->store.add_instance(all->file, all->name, *extracted);
    else
        all->store.add(all->file, all->name, *extracted);
}

static void read_input(std::FILE* stream, const std::string& input, const source_names& names,
                       collected* all) {
    const std::string shown = printable(input);
    const auto collect = [&](const export_function& function) {
        collect_function(function, shown, names, &all->extracted, all);
    };
    read_clang_export(stream, shown, collect, &all->function);
}

/// Joins what was among the inputs of clang's own files.
static void read_clang_files(clang_inputs* inputs, const source_names& names, collected* all) {
    const auto collect = [&](const export_function& function, const std::string& input) {
        collect_function(function, input, names, &all->extracted, all);
    };
    if (!inputs->empty())
        inputs->read(collect, &all->function);
}

static void read_inputs(const import_options& options, const source_names& names, collected* all) {
    clang_inputs clang_files;
    if (options.inputs.empty())
        read_input(stdin, "standard input", names, all);
    for (const std::string& input : options.inputs) {
        if (input == "-") {
            read_input(stdin, "standard input", names, all);
            continue;
        }
        if (clang_files.take(input))
            continue;
        const file_ptr stream(std::fopen(input.c_str(), "rb"));
        if (!stream)
            end_with_error("cannot open %s: %s", printable(input).c_str(), reason_of(errno).c_str());
        read_input(stream.get(), input, names, all);
    }
    for (const std::string& path : options.objects)
        clang_files.take_programs(path);
    if (!options.objects.empty() && clang_files.without_programs())
        end_with_error(
            "no program, library or archive was found; name the folder of those that ran with -objects");
    read_clang_files(&clang_files, names, all);
}

static void print_warnings(const collected& all, const profile_data& data) {
    if (all.empty != 0)
        print_warning(all.empty == 1 ? "%llu function without code was left out"
                                     : "%llu functions without code were left out",
                      static_cast<unsigned long long>(all.empty));
    if (data.different.number != 0)
        print_warning(data.different.number == 1
                          ? "%llu function came again with different blocks, in %s; the one with more "
                            "blocks was kept"
                          : "%llu functions came again with different blocks, the first in %s; the one with "
                            "more blocks was kept",
                      data.different.shown(), printable(data.different.first).c_str());
    if (data.misplaced.number != 0)
        print_warning(
            data.misplaced.number == 1
                ? "%llu block of %s lies beyond the end of its line or file; the sources have changed since "
                  "the program was built (build it again, and run the tests)"
                : "%llu blocks lie beyond the end of their line or file, the first of %s; the sources have "
                  "changed since the program was built (build it again, and run the tests)",
            data.misplaced.shown(), printable(data.misplaced.first).c_str());
}

static void run_clang_import(const import_options& options) {
    const source_names names(options.root, options.all_sources);
    collected all(options.root, options.instances);
    read_inputs(options, names, &all);
    if (all.store.functions().empty()) {
        all.left_out.check_root();
        end_with_error("%s: no functions were found; build the program with -fprofile-instr-generate "
                       "-fcoverage-mapping",
                       shown_inputs(options).c_str());
    }
    if (!options.instances)
        all.store.unite_instances();
    profile_data data = build_profile(&all.store, names);
    if (pgt_IsIncomplete()) // a source that could not be read would have changed the blocks
        pgt_Exit(1);
    write_pair(std::move(data.profile), options);
    print_warnings(all, data);
    all.left_out.print();
}

void import_profiles(const import_options& options) {
    switch (options.format) {
    case import_format::clang:
        return run_clang_import(options);
    case import_format::gcc:
        return run_gcc_import(options);
    case import_format::lcov:
        return run_lcov_import(options);
    }
}

void run_importer(int argc, char** argv) {
    import_options options;
    parse_import_options(argc, argv, &options);
    import_profiles(options);
}
