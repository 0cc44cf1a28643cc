#include "inputs/coverage_walk.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/source_file.h"
#include "coverage/files_of_interest.h"
#include "driver/run_config.h"
#include "inputs/open_profiles.h"
#include "markers/marker_conflicts.h"
#include "markers/parser.h"
#include "profile/dpi_file.h"
#include "profile/line_order.h"

#include <cstdio>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>

static void add_counts(covered_count& sum, const covered_count& other) {
    sum.total += other.total;
    sum.covered += other.covered;
}

void coverage_figures::add(const coverage_figures& other) {
    add_counts(functions, other.functions);
    add_counts(blocks, other.blocks);
    add_counts(lines, other.lines);
    partly_lines += other.partly_lines;
}

void coverage_walk::close_profile::operator()(DPI_FILE* file) const {
    PGOPTI_Close_Dpi_File(file);
}

/// Names relative to a directory that is none would fit no file of anybody's.
static void check_root(const std::string& root) {
    std::error_code error;
    if (!root.empty() && !std::filesystem::is_directory(root, error))
        end_with_error("-root needs a directory, which %s is not", printable(root).c_str());
}

coverage_walk::coverage_walk(const coverage_options& options) : options_(options), names_(options.root) {
    check_root(options.root);
    profile_.reset(open_dynamic_profile(options.dpi_file.c_str()));
    probe_static_profile(options.spi_file.c_str());
    if (options.with_reference)
        reference_.reset(open_reference_profile(options.reference.c_str(), profile_.get()));
    getModuleNames(options.with_components ? options.components.c_str() : nullptr);
    if (Infeasible_markers_specified && check_NFmarkers_intersect() != 0)
        pgt_Exit(1);
}

coverage_walk::~coverage_walk() = default;

/// Analyses the source file that begins with `first`; false when it is not there.
bool coverage_walk::analyse(COMP* first, source_analysis* analysis) {
    order_func(first);
    std::string_view text;
    if (!load_source(first->fileName, &text)) {
        if (!again_)
            print_warning("there is no source file %s (run it where relative names lead to it)",
                          printable(first->fileName).c_str());
        return false;
    }
    const std::vector<std::int32_t> lines = chained_lines();
    const parser markers(first->fileName, one_line_disable, start_disable_block, end_disable_block, lines,
                         run_sources());
    if (!pgopti_Check_Runs(*profile_))
        pgt_Exit(1);
    analysis_inputs inputs = {
        .profile = {profile_.get(), options_.dpi_file.c_str()},
        .reference = {reference_.get(), options_.reference.c_str()},
        .routines = first,
        .text = text,
        .lines = count_lines(text) + 1,
        .disabled = markers.all_disabled_lines(),
    };
    const analysis_options how = {.no_partial = options_.no_partial, .counts = count_precision::exact};
    *analysis = analyse_file(inputs, how, nullptr);
    inputs.reference.file = nullptr;
    if (wants_whole())
        whole_ = analyse_file(inputs, how, nullptr);
    if (analysis->out_of_memory || whole_.out_of_memory)
        throw std::bad_alloc(); // infeasible
    return true;
}

/// Hands an analysed file to the sink and adds it to the totals.
void coverage_walk::visit(const source_analysis& analysis,
                          const std::function<void(const file_coverage&)>& sink, const line_watcher& watch) {
    collect_lines(analysis, lines_, watch);
    file_coverage file = {analysis, {}, false, lines_, {}, wants_whole() ? &whole_ : nullptr};
    file.below_root = names_.resolve(analysis.path, &file.name);
    const source_figures& figures = analysis.figures;
    file.figures.functions = {figures.functions, figures.functions_covered};
    file.figures.blocks = {figures.blocks, figures.blocks_covered};
    file.figures.lines.total = static_cast<std::int64_t>(lines_.size());
    for (const line_coverage& line : lines_) {
        file.figures.lines.covered += line.covered() ? 1 : 0;
        file.figures.partly_lines += line.partly() ? 1 : 0;
    }
    totals_.figures.add(file.figures);
    ++totals_.files.total;
    totals_.files.covered += figures.status == file_status::covered ? 1 : 0;
    sink(file);
}

coverage_totals coverage_walk::run(const std::function<void(const file_coverage&)>& sink,
                                   const line_watcher& watch) {
    totals_ = {};
    for (COMP* comp = GetComponentList(options_.spi_file.c_str(), nullptr, isInComponents, modules_); comp;) {
        COMP* const first = comp;
        source_analysis analysis;
        if (analyse(first, &analysis))
            visit(analysis, sink, watch);
        else
            totals_.missing.emplace_back(first->fileName);
        release_source();
        while (comp && same_file(comp, first))
            comp = comp->next;
    }
    if (pgt_IsIncomplete())
        pgt_Exit(0); // run_program makes it 1, and tells of a lack of memory, which nobody has told yet
    again_ = true;
    return std::move(totals_);
}

coverage_totals coverage_walk::run_any(const std::function<void(const file_coverage&)>& sink,
                                       const line_watcher& watch) {
    coverage_totals totals = run(sink, watch);
    if (totals.files.total == 0)
        end_with_error("%s and %s hold no source file of interest that is there; run it where relative names "
                       "lead to them, or correct -comp",
                       printable(options_.spi_file).c_str(), printable(options_.dpi_file).c_str());
    return totals;
}
