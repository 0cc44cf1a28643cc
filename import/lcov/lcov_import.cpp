#include "import/lcov/lcov_import.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/progress_line.h"
#include "import/gcc/compressed_input.h"
#include "import/gcc/file_records.h"
#include "import/lcov/trace_profile.h"
#include "import/lcov/trace_reader.h"
#include "import/lcov/trace_store.h"
#include "import/source_names.h"
#include "import/write_pair.h"

namespace {

/// What was odd in the traces.
struct trace_oddities {
    std::uint64_t unknown = 0; ///< lines with unknown records
    std::uint64_t clamped = 0; ///< counts
};

} // namespace

static void read_trace(const std::string& input, trace_store* store, trace_oddities* oddities) {
    compressed_input stream(input);
    trace_reader reader(stream.shown(), [store](const trace_section& section) { store->add(section); });
    for (std::string_view piece = stream.read(); !piece.empty(); piece = stream.read())
        reader.feed(piece);
    reader.finish();
    oddities->unknown += reader.unknown();
    oddities->clamped += reader.clamped();
}

static void print_warnings(const trace_oddities& oddities, const trace_profile& made) {
    const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
    if (oddities.unknown != 0)
        print_warning(oddities.unknown == 1 ? "%llu line with an unknown record was passed over"
                                            : "%llu lines with unknown records were passed over",
                      number(oddities.unknown));
    if (oddities.clamped != 0)
        print_warning(
            oddities.clamped == 1
                ? "%llu count was negative or too large and was set to 0 or to the largest count"
                : "%llu counts were negative or too large and were set to 0 or to the largest count",
            number(oddities.clamped));
    warn_of_unreadable_sources(made.unreadable);
    if (made.misplaced.number != 0)
        print_warning(made.misplaced.number == 1
                          ? "%llu block of %s lies beyond the end of its file; the sources have changed "
                            "since the trace was written (make it again)"
                          : "%llu blocks lie beyond the end of their file, the first of %s; the sources have "
                            "changed since the trace was written (make it again)",
                      made.misplaced.shown(), printable(made.misplaced.first).c_str());
}

void run_lcov_import(const import_options& options) {
    if (options.inputs.empty())
        end_with_error("no trace file given: vexcov-import lcov [options] files (see vexcov-import -help)");
    const source_names names(options.root, options.all_sources);
    left_out_sources left_out(options.root);
    trace_store store(names, &left_out, options.instances);
    trace_oddities oddities;
    for (progress_line progress("traces read", options.inputs.size());
         const std::string& input : options.inputs) {
        read_trace(input, &store, &oddities);
        progress.step();
    }
    trace_profile made = build_trace_profile(&store, names);
    if (made.profile.routines.empty()) {
        left_out.check_root();
        end_with_error("%s: no lines and no functions were found; give the trace of a run that executed some",
                       shown_inputs(options).c_str());
    }
    if (pgt_IsIncomplete()) // a source that could not be read would have changed the blocks
        pgt_Exit(1);
    write_pair(std::move(made.profile), options);
    print_warnings(oddities, made);
    left_out.print();
}
