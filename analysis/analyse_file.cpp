#include "analysis/function_filter.h"
#include "analysis/source_analysis.h"
#include "common/message.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

struct segment_release {
    void operator()(DPI_SEGMENT* segment) const { PGOPTI_Free_Segment(segment); }
};
using segment_ptr = std::unique_ptr<DPI_SEGMENT, segment_release>;

/// The function at hand: what becomes of it, and its records.
struct current_function {
    source_function result;
    const COMP* routine;
    DPI_RECORD record;
    DPI_RECORD reference;      ///< record of the reference run, or one without bytes
    std::int64_t disabled = 0; ///< blocks on disabled lines
};

/// Analyses one source file.
class file_analyser {
  public:
    file_analyser(const analysis_inputs& inputs, const analysis_options& options, const block_sink* sink)
        : inputs_(inputs), options_(options), sink_(sink), figures_(result_.figures) {}

    source_analysis run();

  private:
    bool add_routine(const COMP* routine);
    bool add_called(current_function& function);
    void add_missing(const current_function& function);
    bool add_block(current_function& function, std::uint32_t block);
    void note_position(source_function& function, source_position position) const;
    bool is_known(const current_function& function, std::uint32_t block) const;
    bool credits_last_block(const source_function& function) const;
    bool close_function(current_function& function);
    void finish_figures();
    bool exact() const { return options_.counts == count_precision::exact; }

    const analysis_inputs& inputs_;
    const analysis_options& options_;
    const block_sink* sink_;
    source_analysis result_;
    source_figures& figures_;
    block_buffer blocks_; ///< of the function at hand, for the sink; kept for its memory
};

} // namespace

static segment_ptr find_segment(const named_profile& profile, const COMP* routine) {
    if (!profile.file)
        return nullptr;
    return segment_ptr(PGOPTI_Get_Segment(profile.file, profile.name, routine->fileName, routine->procName));
}

/// Where a block starts: line and column, each at least 1.
static source_position block_position(DPI_RECORD record, std::uint32_t block) {
    if (!DPI_has_line_info(record))
        return {1, 1};
    const DPI_POSITION stored = DPI_block_position_get(record, block);
    return {stored.line == 0 ? 1 : stored.line, stored.column == 0 ? 1 : stored.column};
}

static void warn_no_line_info(const char* fileName) {
    if (messages_are_named()) {
        print_warning(
            "%s has no line numbers in the profile; its counts are shown at the start of its first line",
            printable(fileName).c_str());
        return;
    }
    std::fprintf(stderr, "No line number info for %s: recompile with -Qprof_genx (instead of -Qprof_gen).\n",
                 fileName);
    std::fputs("...Assigning all exec counts to line 1 column 1.\n", stderr);
}

/// True when the reference run has the block already.
bool file_analyser::is_known(const current_function& function, std::uint32_t block) const {
    return function.reference.bytes && DPI_block_count_get(function.reference) > block &&
           DPI_counter_get(function.reference, block) > 0.0F;
}

/// Widens the extent of a function by the position of one of its blocks.
void file_analyser::note_position(source_function& function, source_position position) const {
    if (function.last.line == 0)
        function.first = position;
    function.first = std::min(function.first, position);
    function.last = std::max(function.last, position);
}

/// Enters one block of a function. False for lack of memory.
bool file_analyser::add_block(current_function& function, std::uint32_t block) {
    const source_position position = block_position(function.record, block);
    note_position(function.result, position);
    const bool disabled = inputs_.disabled.contains(position.line);
    if (disabled) {
        --figures_.blocks;
        ++function.disabled;
    }
    const double count = static_cast<double>(DPI_counter_get(function.record, block));
    if (!disabled && sink_)
        add_block_cov(static_cast<std::int32_t>(position.line), static_cast<std::int32_t>(position.column),
                      blocks_, count);
    // All ones have a meaning of their own, which an exact count must not take.
    std::uint64_t executions =
        exact() ? std::min(DPI_exact_counter_get(function.record, block), NEVER_ENTERED - 1)
                : DPI_count_to_u64(count);
    if (is_known(function, block)) {
        executions = 0;
    } else if (!disabled && count > 0.0) {
        ++function.result.covered;
        ++figures_.blocks_covered;
    }
    std::uint32_t* unexecuted = nullptr;
    if (!result_.positions.add_block(position.line, position.column, executions,
                                     function.result.new_in_reference, &unexecuted))
        return false;
    if (options_.no_partial && unexecuted) {
        function.result.covered += *unexecuted;
        figures_.blocks_covered += *unexecuted;
        *unexecuted = 0;
    }
    return true;
}

/// True when the function's last block is credited as covered.
bool file_analyser::credits_last_block(const source_function& function) const {
    if (!options_.no_partial)
        return true;
    // Deliberate: a block behind the last line belongs to no text; there is none to ask about.
    const block_list_node* node = function.last.line < inputs_.lines
                                      ? result_.positions.find(function.last.line, function.last.column)
                                      : nullptr;
    return node && node->count == 0 && node->numBlocks == 1 && node->numExecuted == 0;
}

/// The end of a called function outside differential mode. False for lack of memory.
bool file_analyser::close_function(current_function& function) {
    source_function& result = function.result;
    // Deliberate: a function that was entered is credited with one block more than was counted, as its last
    // block is mostly the return point that the instrumentation does not count.
    if (credits_last_block(result) && result.covered < function.routine->blockCount + result.extra) {
        ++result.covered;
        ++figures_.blocks_covered;
    }
    return result_.positions.adjust(result.last.line, result.last.column);
}

/// Enters a function that has a record. False for lack of memory.
bool file_analyser::add_called(current_function& function) {
    source_function& result = function.result;
    if (!DPI_has_line_info(function.record))
        warn_no_line_info(result_.path.c_str());
    ++figures_.functions_found;
    const std::uint32_t blockCount = DPI_block_count_get(function.record);
    result.extra = std::max<std::int64_t>(std::int64_t{blockCount} - function.routine->blockCount, 0);
    figures_.blocks += result.extra;
    result.entry_count =
        exact() ? DPI_exact_entry_count(function.record) : DPI_entry_frequency(function.record);
    if (sink_) {
        blocks_.clear();
        sink_->function_begins(result.shown_name, result.entry_count);
    }
    for (std::uint32_t block = blockCount; block-- > 0;)
        if (!add_block(function, block))
            return false;
    if (sink_)
        sink_->function_ends(blocks_);
    if (!result_.differential)
        return close_function(function);
    figures_.functions_with_new += result.covered > 0 ? 1 : 0;
    return true;
}

/// A function without a record was never executed.
void file_analyser::add_missing(const current_function& function) {
    const source_function& result = function.result;
    if (sink_)
        sink_->function_missing(result.shown_name, result.line);
    if (!result_.positions.add_block(static_cast<std::uint32_t>(result.line), 1, NEVER_ENTERED, false,
                                     nullptr)) {
        // infeasible: begin
        result_.out_of_memory = true;
        std::printf("WARNING: unable to process func %s in file %s\n", result.shown_name,
                    result_.path.c_str());
        // infeasible: end
    }
}

/// Enters one routine of the static profile. False for lack of memory.
bool file_analyser::add_routine(const COMP* routine) {
    if (excludeFunc(routine->displayName, routine->line)) {
        ++figures_.functions_excluded;
        return true;
    }
    if (inputs_.disabled.contains(static_cast<unsigned long>(routine->line)))
        return true;
    ++figures_.functions;
    figures_.blocks += routine->blockCount;
    const segment_ptr segment = find_segment(inputs_.profile, routine);
    const segment_ptr reference = find_segment(inputs_.reference, routine);
    current_function function = {};
    function.routine = routine;
    function.result.name = routine->procName;
    function.result.shown_name = routine->displayName;
    function.result.line = routine->line;
    function.result.ambiguous = routine->isAmbiguous != 0;
    function.result.called = segment != nullptr;
    if (segment) {
        function.record = segment->view();
        function.reference = reference ? reference->view() : DPI_RECORD{};
        function.result.new_in_reference = result_.differential && !reference;
        figures_.functions_new += function.result.new_in_reference ? 1 : 0;
        if (!add_called(function))
            return false;
    } else if (!result_.differential) {
        add_missing(function);
    }
    function.result.blocks = routine->blockCount - function.disabled + function.result.extra;
    result_.functions.push_back(function.result);
    return true;
}

void file_analyser::finish_figures() {
    if (!result_.differential) {
        figures_.functions_covered = figures_.functions_found;
        figures_.status = figures_.functions_found != 0 ? file_status::covered : file_status::uncovered;
        return;
    }
    figures_.functions_covered = figures_.functions_with_new;
    if (figures_.functions_with_new != 0)
        figures_.status =
            figures_.functions_new == figures_.functions ? file_status::uncovered : file_status::covered;
}

source_analysis file_analyser::run() {
    result_.path = inputs_.routines->fileName;
    result_.text = inputs_.text;
    result_.differential = inputs_.reference.file != nullptr;
    result_.no_partial = options_.no_partial;
    result_.disabled = inputs_.disabled;
    result_.positions = position_table(inputs_.lines);
    for (const COMP* routine = inputs_.routines; routine && same_file(routine, inputs_.routines);
         routine = routine->next) {
        if (add_routine(routine))
            continue;
        // infeasible: begin
        result_.complete = false;
        result_.out_of_memory = true;
        break;
        // infeasible: end
    }
    result_.positions.sort();
    finish_figures();
    return std::move(result_);
}

source_analysis analyse_file(const analysis_inputs& inputs, const analysis_options& options,
                             const block_sink* sink) {
    return file_analyser(inputs, options, sink).run();
}
