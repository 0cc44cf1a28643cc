#include "coverage/block_marking.h"

#include "analysis/source_analysis.h"
#include "common/fatal.h"
#include "common/number_format.h"
#include "coverage/coverage_list.h"
#include "coverage/function_table.h"
#include "coverage/run_totals.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "markers/parser.h"
#include "profile/dpi_file.h"
#include "profile/module_list.h"

#include <cstdint>
#include <cstdio>

/// Nothing that follows can be right, so the profile is closed.
static void close_profile() {
    PGOPTI_Close_Dpi_File(pgofDPIFile);
    pgofDPIFile = nullptr;
}

static void check_profile() {
    if (!pgofDPIFile) {
        std::fprintf(stderr, "Internal error: couldn't find the dpi file %s!\n", g_lpszDPIFileName);
        pgt_Exit(1);
    }
    if (!pgopti_Check_Runs(*pgofDPIFile)) {
        close_profile();
        pgt_Exit(1);
    }
}

/// Analyses the current source file of g_cl, whose text is loaded.
static source_analysis analyse_current(const COMP* first) {
    const source_analysis& current = g_cl->current_analysis();
    const analysis_inputs inputs = {
        .profile = {pgofDPIFile, g_lpszDPIFileName},
        .reference = {compWithRef ? pgofRefDPIFile : nullptr, g_lpszRefDPIFileName},
        .routines = first,
        .text = current.text,
        .lines = current.positions.lines(),
        .disabled = pars->all_disabled_lines(),
    };
    return analyse_file(inputs, {.no_partial = g_bNoPartial}, block_exports);
}

static void fill_function_table(const COMP* first, const source_analysis& analysis) {
    allocFuncsTable(first);
    numFileFuncs += static_cast<std::int32_t>(analysis.figures.functions_excluded);
    for (const source_function& function : analysis.functions)
        addFunc(function.shown_name, function.ambiguous, function.line,
                static_cast<std::int32_t>(function.blocks), static_cast<std::int32_t>(function.covered),
                function.new_in_reference);
}

/// Stores the figures in the file's entry and adds them to the totals.
static void store_figures(const source_figures& figures) {
    filename_list_node* entry = g_cl->file_list_tail();
    if (figures.status != file_status::none)
        entry->flags |= figures.status == file_status::covered ? FILE_COVERED : FILE_UNCOVERED;
    entry->numFuncs = static_cast<std::uint32_t>(figures.functions);
    entry->numFuncsCovered = static_cast<std::uint32_t>(figures.functions_covered);
    entry->funcCoverage = percent64(figures.functions_covered, figures.functions);
    entry->numBlocks = static_cast<std::uint32_t>(figures.blocks);
    entry->numBlocksCovered = static_cast<std::uint32_t>(figures.blocks_covered);
    entry->blockCoverage = percent64(figures.blocks_covered, figures.blocks);
    functionCoverage = entry->funcCoverage;
    blockCoverage = entry->blockCoverage;
    totalNumberOfFiles += 1;
    totalNumberOfFilesCovered += figures.status == file_status::covered ? 1 : 0;
    totalNumberOfProcs += figures.functions;
    totalNumberOfProcsCovered += figures.functions_covered;
    totalNumberOfBlocks += figures.blocks;
    totalNumberOfBlocksCovered += figures.blocks_covered;
}

marking mark_source_file(const COMP* first) {
    functionCoverage = 0.0;
    blockCoverage = 0.0;
    if (block_exports)
        block_exports->file_begins(first->fileName);
    if (!g_cl->bAddFilename(first->fileName))
        return marking::given_up; // infeasible
    if (!g_cl->bSetName(first->fileName))
        return marking::source_missing;
    check_profile();
    source_analysis analysis = analyse_current(first);
    if (analysis.out_of_memory)
        pgt_OutOfMemory(); // infeasible
    if (!analysis.complete) {
        // infeasible: begin
        close_profile();
        return marking::given_up;
        // infeasible: end
    }
    fill_function_table(first, analysis);
    store_figures(analysis.figures);
    const bool nothing_new = analysis.differential && analysis.figures.blocks_covered == 0;
    g_cl->current_analysis() = std::move(analysis);
    if (block_exports)
        block_exports->file_ends();
    return nothing_new ? marking::nothing_new : marking::listed;
}

bool markBlocks(const COMP* first) {
    return mark_source_file(first) == marking::listed;
}
