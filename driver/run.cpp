#include "driver/run.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "coverage/block_marking.h"
#include "coverage/coverage_list.h"
#include "coverage/files_of_interest.h"
#include "driver/banner.h"
#include "driver/command_line.h"
#include "driver/progress_meter.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "driver/usage.h"
#include "export/block_coverage.h"
#include "export/function_coverage.h"
#include "inputs/open_profiles.h"
#include "markers/marker_conflicts.h"
#include "markers/parser.h"
#include "profile/dpi_file.h"
#include "profile/dpi_message.h"
#include "profile/line_order.h"
#include "profile/module_list.h"
#include "report/file_index.h"
#include "report/listing.h"
#include "report/summary_page.h"
#include "report/tool_bar.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <vector>

static std::FILE* function_text = nullptr; ///< -txtfcvrg
static std::FILE* function_xml = nullptr;  ///< -xmlfcvrg

/// Opens an export that was asked for; null for a null name.
static std::FILE* open_export(const char* name) {
    if (!name)
        return nullptr;
    std::FILE* stream = open_output(name, "w");
    if (!stream) {
        print_unopened("Couldn't open file %s for output!", name);
        pgt_Exit(1);
    }
    return stream;
}

static void open_exports() {
    const char* project = g_lpszProjName ? g_lpszProjName : "";
    function_xml = open_export(g_lpszXMLOut);
    if (function_xml)
        std::fprintf(function_xml, "<PROJECT name = \"%s\">\n", project);
    function_text = open_export(g_lpszTextOut);
    outxml = open_export(g_lpszbfullXMLOut);
    // Deliberate: no blanks around the equals sign here, unlike in the function export; readers of each
    // format expect its own form.
    if (outxml)
        std::fprintf(outxml, "<PROJECT name=\"%s\">\n", project);
    outtxt = open_export(g_lpszbfullTextOut);
    if (outxml || outtxt)
        block_exports = &block_export;
}

static void close_exports() {
    block_exports = nullptr;
    if (function_xml) {
        std::fputs("</PROJECT>\n", function_xml);
        close_output(function_xml);
    }
    if (outxml) {
        std::fputs("</PROJECT>\n", outxml);
        close_output(outxml);
        outxml = nullptr;
    }
    if (function_text)
        close_output(function_text);
    if (outtxt) {
        close_output(outtxt);
        outtxt = nullptr;
    }
}

/// Marks and lists the source file that begins with `first`.
static void process_module(COMP* first) {
    order_func(first);
    const std::vector<std::int32_t> lines = chained_lines();
    const auto markers = std::make_unique<parser>(first->fileName, one_line_disable, start_disable_block,
                                                  end_disable_block, lines, run_sources());
    pars = markers.get();
    if (markBlocks(first) && !bOutputLineCoverage(g_lpszOutFileExt))
        pgt_Exit(1);
    pars = nullptr;
}

static void process_modules() {
    for (COMP* comp = componentList; comp;) {
        const COMP* first = comp;
        process_module(comp);
        if (bProgressMeter)
            tickTick();
        g_cl->vPrepareForNewSrcFile();
        release_source();
        // The other routines of the file went with the first; each still counts for the meter.
        for (comp = comp->next; comp && same_file(comp, first); comp = comp->next)
            if (bProgressMeter)
                tickTick();
    }
}

/// Writes the index pages, the summary and the root page.
static void write_overview() {
    static const char coveredName[] = "__Covered_Files_Coverage";
    static const char uncoveredName[] = "__Uncovered_Files_Coverage";
    int covered = 0;
    int uncovered = 0;
    filename_list_node** coveredFiles = nullptr;
    filename_list_node** uncoveredFiles = nullptr;
    if (g_cl->uiGetFilenames(&covered, &coveredFiles, &uncovered, &uncoveredFiles) < 0)
        pgt_Exit(1);
    const std::unique_ptr<filename_list_node*, decltype(&std::free)> ownCovered(coveredFiles, std::free);
    const std::unique_ptr<filename_list_node*, decltype(&std::free)> ownUncovered(uncoveredFiles, std::free);
    if (covered > 0 &&
        !bCreateCovProfMain(coveredName, g_lpszOutFileExt, g_lpszProjName, covered, coveredFiles))
        pgt_Exit(1);
    if (uncovered > 0 &&
        !bCreateUnCovProfMain(uncoveredName, g_lpszOutFileExt, g_lpszProjName, uncovered, uncoveredFiles))
        pgt_Exit(1);
    if (!bCreateSummary(g_lpszProjName, "Code_Coverage", "__Code_Coverage",
                        covered > 0 ? coveredName : nullptr, uncovered > 0 ? uncoveredName : nullptr,
                        g_lpszOutFileExt))
        pgt_Exit(1);
}

/// `modules` receives the module list, which componentList points into.
static void write_report(module_list& modules) {
    componentList = GetComponentList(g_lpszSPIFileName, &numComponents, isInComponents, modules);
    // An existing directory is fine; where there can be none, creating the first page fails.
    mkdir("CodeCoverage", S_IFDIR | 0777);
    if (!createToolBar(g_lpszOutFileExt))
        pgt_Exit(1);
    if (bProgressMeter)
        tickInitTick(numComponents, 10);
    process_modules();
    write_overview();
}

static void write_function_exports() {
    if (function_text && !bOutputFunctionCoverageTxt(function_text))
        pgt_Exit(1);
    if (function_xml && !bOutputFunctionCoverageXML(function_xml))
        pgt_Exit(1);
}

void run_report(int argc, char** argv) {
    module_list modules;
    if (!bParseCommandLine(argc, argv)) {
        PrintVersion();
        print_usage(argc > 0 ? argv[0] : "vexcov");
        pgt_Exit(1);
    }
    pgofDPIFile = open_dynamic_profile(g_lpszDPIFileName);
    if (html_output)
        probe_static_profile(g_lpszSPIFileName);
    open_exports();
    if (compWithRef)
        pgofRefDPIFile = open_reference_profile(g_lpszRefDPIFileName, pgofDPIFile);
    PGOPTI_Tool_Set_Name(argc > 0 ? argv[0] : nullptr);
    getModuleNames(moduleListName);
    if (Infeasible_markers_specified && check_NFmarkers_intersect() != 0)
        pgt_Exit(1);
    if (html_output)
        write_report(modules);
    else
        write_function_exports();
    release_setting(g_lpszOutFileExt);
    release_setting(g_lpszDPIFileName);
    close_exports();
    release_setting(g_lpszRefDPIFileName);
    release_setting(g_lpszProjName);
    release_setting(g_lpszMailAddr);
    release_setting(g_lpszMailName);
    if (bProgressMeter)
        std::fputc('\n', stdout);
}
