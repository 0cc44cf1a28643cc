#include "coverage/block_marking.h"

#include "common/fatal.h"
#include "common/number_format.h"
#include "coverage/coverage_list.h"
#include "coverage/function_table.h"
#include "coverage/run_totals.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "export/block_coverage.h"
#include "markers/parser.h"
#include "profile/dpi_file.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <cstdint>
#include <cstdio>
#include <memory>

namespace {

/// Figures of the source file being marked.
struct file_figures {
    const char* fileName = nullptr;
    std::int64_t functions = 0;
    std::int64_t functionsFound = 0;   ///< with a record in the profile
    std::int64_t functionsNew = 0;     ///< differential mode: without one in the reference
    std::int64_t functionsWithNew = 0; ///< differential mode: with new coverage
    std::int64_t blocks = 0;
    std::int64_t blocksCovered = 0;
    bool anyProcessed = false; ///< the blocks of some function were processed
};

/// Figures of one function.
struct function_figures {
    std::int64_t extra = 0; ///< blocks of the record beyond the static count
    std::int64_t disabled = 0;
    std::int64_t covered = 0;
    std::uint32_t lastLine = 0; ///< position of the function's last block
    std::uint32_t lastColumn = 0;
    bool newInReference = false;
};

struct segment_release {
    void operator()(DPI_SEGMENT* segment) const { PGOPTI_Free_Segment(segment); }
};
using segment_ptr = std::unique_ptr<DPI_SEGMENT, segment_release>;

} // namespace

static block_buffer export_blocks; ///< blocks of the current function for the exports; kept for its capacity

static bool exporting() {
    return g_lpszbfullTextOut || g_lpszbfullXMLOut;
}

/// The coverage list refused a block: nothing that follows can be right, so the profile is closed.
static bool give_up() {
    PGOPTI_Close_Dpi_File(pgofDPIFile);
    pgofDPIFile = nullptr;
    return false;
}

static void check_profile() {
    if (!pgofDPIFile) {
        std::fprintf(stderr, "Internal error: couldn't find the dpi file %s!\n", g_lpszDPIFileName);
        pgt_Exit(1);
    }
    if (pgofDPIFile->num_runs == 0) {
        std::fputs("Read in 0 runs for .dpi file - .dpi File corrupt!\n", stderr);
        give_up();
        pgt_Exit(1);
    }
}

static void export_function_head(const COMP* comp, DPI_RECORD record) {
    char freq[kNumberTextSize];
    u64_to_ascii_no_sep(freq, DPI_entry_frequency(record));
    if (g_lpszbfullTextOut)
        std::fprintf(outtxt, "function - %s\t%s\n", comp->displayName, freq);
    if (g_lpszbfullXMLOut)
        std::fprintf(outxml, "<FUNCTION name=\"%s\" freq=\"%s\">\n", comp->displayName, freq);
    export_blocks.clear();
}

static void export_function_blocks() {
    sort_blocks(export_blocks);
    if (g_lpszbfullTextOut)
        printTXT_bcov_full(outtxt, export_blocks);
    if (g_lpszbfullXMLOut) {
        printXML_bcov_full(outxml, export_blocks);
        std::fputs("</FUNCTION>\n", outxml);
    }
}

static void export_missing_function(const COMP* comp) {
    if (g_lpszbfullTextOut)
        std::fprintf(outtxt, "function - %s\t0\n", comp->displayName);
    if (g_lpszbfullXMLOut)
        std::fprintf(outxml, "<FUNCTION name=\"%s\" freq=\"0\" line=\"%d\"></FUNCTION>\n", comp->displayName,
                     comp->line);
}

/// Where a block starts: line and column, each at least 1.
static DPI_POSITION block_position(DPI_RECORD record, std::uint32_t block) {
    if (!DPI_has_line_info(record))
        return {1, 1};
    const DPI_POSITION stored = DPI_block_position_get(record, block);
    return {stored.line == 0 ? 1 : stored.line, stored.column == 0 ? 1 : stored.column};
}

/// Marks one block of a function. False when the coverage list refuses it.
static bool mark_block(file_figures& file, function_figures& function, DPI_RECORD record,
                       DPI_RECORD reference, std::uint32_t block) {
    const DPI_POSITION position = block_position(record, block);
    if (position.line > function.lastLine ||
        (position.line == function.lastLine && position.column > function.lastColumn)) {
        function.lastLine = position.line;
        function.lastColumn = position.column;
    }
    const bool disabled = pars->is_disabled_line(position.line);
    if (disabled) {
        --file.blocks;
        ++function.disabled;
    }
    double count = static_cast<double>(DPI_counter_get(record, block));
    if (!disabled && exporting())
        add_block_cov(static_cast<std::int32_t>(position.line), static_cast<std::int32_t>(position.column),
                      export_blocks, count);
    if (reference.bytes && DPI_block_count_get(reference) > block &&
        DPI_counter_get(reference, block) > 0.0F) {
        count = 0.0; // the reference run has it already
    } else if (!disabled && count > 0.0) {
        ++function.covered;
        ++file.blocksCovered;
    }
    unsigned int* unexecuted = nullptr;
    if (!g_cl->bAddBlockCount(file.fileName, position.line, position.column, DPI_count_to_u64(count),
                              function.newInReference, &unexecuted))
        return false;
    if (g_bNoPartial && unexecuted) {
        function.covered += *unexecuted;
        file.blocksCovered += *unexecuted;
        *unexecuted = 0;
    }
    return true;
}

/// True when the function's last block is credited as covered.
static bool credits_last_block(const function_figures& function) {
    if (!g_bNoPartial)
        return true;
    std::uint64_t count = 0;
    unsigned int blocksThere = 0;
    unsigned int executedThere = 0;
    g_cl->bFetchHitCount(function.lastLine, function.lastColumn, &count, nullptr, &blocksThere,
                         &executedThere, nullptr);
    return count == 0 && blocksThere == 1 && executedThere == 0;
}

/// The end of a function outside differential mode. False when the coverage list refuses the adjustment.
static bool close_function(file_figures& file, function_figures& function, const COMP* comp) {
    // Deliberate: a function that was entered is credited with one block more than was counted, as its last
    // block is mostly the return point that the instrumentation does not count.
    if (credits_last_block(function) && function.covered < comp->blockCount + function.extra) {
        ++function.covered;
        ++file.blocksCovered;
    }
    return g_cl->bAdjustLastBlock(file.fileName, function.lastLine, function.lastColumn);
}

static void warn_no_line_info(const char* fileName) {
    std::fprintf(stderr, "No line number info for %s: recompile with -Qprof_genx (instead of -Qprof_gen).\n",
                 fileName);
    std::fputs("...Assigning all exec counts to line 1 column 1.\n", stderr);
}

/// Marks a function that has a record. `reference` is its record of the reference run, or one without bytes.
static bool mark_function(file_figures& file, function_figures& function, const COMP* comp, DPI_RECORD record,
                          DPI_RECORD reference) {
    if (!DPI_has_line_info(record))
        warn_no_line_info(file.fileName);
    ++file.functionsFound;
    const std::uint32_t blockCount = DPI_block_count_get(record);
    if (std::int64_t{blockCount} > comp->blockCount) {
        function.extra = std::int64_t{blockCount} - comp->blockCount;
        file.blocks += function.extra;
    }
    if (exporting())
        export_function_head(comp, record);
    for (std::uint32_t block = blockCount; block-- > 0;)
        if (!mark_block(file, function, record, reference, block))
            return give_up();
    if (exporting())
        export_function_blocks();
    file.anyProcessed = true;
    if (compWithRef) {
        file.functionsWithNew += function.covered > 0 ? 1 : 0;
        return true;
    }
    return close_function(file, function, comp) || give_up();
}

/// A function without a record was never executed.
static void mark_missing_function(const file_figures& file, const COMP* comp) {
    export_missing_function(comp);
    if (!g_cl->bAddBlockCount(file.fileName, static_cast<unsigned int>(comp->line), 1, NEVER_ENTERED, false,
                              nullptr))
        std::printf("WARNING: unable to process func %s in file %s\n", comp->displayName, file.fileName);
}

/// Marks one routine of the static profile. False when the coverage list gave up.
static bool mark_component(file_figures& file, const COMP* comp) {
    if (excludeFunc(comp->displayName, comp->line)) {
        ++numFileFuncs;
        return true;
    }
    if (pars->is_disabled_line(static_cast<unsigned long>(comp->line)))
        return true;
    ++file.functions;
    file.blocks += comp->blockCount;
    const segment_ptr segment(
        PGOPTI_Get_Segment(pgofDPIFile, g_lpszDPIFileName, comp->fileName, comp->procName));
    segment_ptr reference;
    function_figures function;
    if (compWithRef)
        reference.reset(
            PGOPTI_Get_Segment(pgofRefDPIFile, g_lpszRefDPIFileName, comp->fileName, comp->procName));
    if (segment) {
        if (compWithRef && !reference) {
            ++file.functionsNew;
            function.newInReference = true;
        }
        if (!mark_function(file, function, comp, segment->view(),
                           reference ? reference->view() : DPI_RECORD{}))
            return false;
    } else if (!compWithRef) {
        mark_missing_function(file, comp);
    }
    addFunc(comp->displayName, comp->isAmbiguous != 0, comp->line,
            static_cast<std::int32_t>(comp->blockCount - function.disabled + function.extra),
            static_cast<std::int32_t>(function.covered), function.newInReference);
    return true;
}

/// The file's mark for the index pages.
static std::uint32_t file_status(const file_figures& file) {
    if (!compWithRef)
        return file.anyProcessed ? FILE_COVERED : FILE_UNCOVERED;
    if (file.functionsWithNew == 0)
        return 0;
    return file.functionsNew == file.functions ? FILE_UNCOVERED : FILE_COVERED;
}

/// Stores the figures in the file's entry and adds them to the totals.
static void store_figures(const file_figures& file) {
    const std::int64_t covered = compWithRef ? file.functionsWithNew : file.functionsFound;
    const std::uint32_t status = file_status(file);
    filename_list_node* entry = g_cl->file_list_tail();
    entry->flags |= status;
    entry->numFuncs = static_cast<std::uint32_t>(file.functions);
    entry->numFuncsCovered = static_cast<std::uint32_t>(covered);
    entry->funcCoverage = percent64(covered, file.functions);
    entry->numBlocks = static_cast<std::uint32_t>(file.blocks);
    entry->numBlocksCovered = static_cast<std::uint32_t>(file.blocksCovered);
    entry->blockCoverage = percent64(file.blocksCovered, file.blocks);
    functionCoverage = entry->funcCoverage;
    blockCoverage = entry->blockCoverage;
    totalNumberOfFiles += 1;
    totalNumberOfFilesCovered += status == FILE_COVERED ? 1 : 0;
    totalNumberOfProcs += file.functions;
    totalNumberOfProcsCovered += covered;
    totalNumberOfBlocks += file.blocks;
    totalNumberOfBlocksCovered += file.blocksCovered;
}

bool markBlocks(COMP* first) {
    functionCoverage = 0.0;
    blockCoverage = 0.0;
    file_figures file;
    file.fileName = first->fileName;
    if (g_lpszbfullXMLOut)
        std::fprintf(outxml, "<MODULE name=\"%s\">\n", file.fileName);
    if (g_lpszbfullTextOut)
        std::fprintf(outtxt, "file - %s\n", file.fileName);
    if (!g_cl->bAddFilename(file.fileName) || !g_cl->bSetName(file.fileName))
        return false;
    check_profile();
    allocFuncsTable(first);
    for (const COMP* comp = first; comp && same_file(comp, first); comp = comp->next)
        if (!mark_component(file, comp))
            return false;
    store_figures(file);
    if (g_lpszbfullXMLOut)
        std::fputs("</MODULE>\n", outxml);
    return !compWithRef || file.blocksCovered != 0;
}
