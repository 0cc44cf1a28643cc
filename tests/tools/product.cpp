#include "tests/tools/product.h"

#include "common/fatal.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "coverage/coverage_list.h"
#include "coverage/files_of_interest.h"
#include "coverage/function_table.h"
#include "coverage/run_totals.h"
#include "driver/color_table.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "profile/dpi_file.h"
#include "profile/dpi_message.h"
#include "profile/line_order.h"
#include "tests/tools/scratch.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

// ---- back to the state of a fresh process ----

static void reset_coverage_list() {
    g_cl->vPrepareForNewSrcFile();
    std::destroy_at(g_cl);
    std::construct_at(g_cl);
}

static void reset_configuration() {
    for (char** setting : {&g_lpszSPIFileName, &g_lpszDPIFileName, &g_lpszRefDPIFileName, &g_lpszProjName,
                           &g_lpszMailName, &g_lpszMailAddr, &g_lpszOutFileExt})
        release_setting(*setting);
    for (const char** setting :
         {&moduleListName, &g_lpszTextOut, &g_lpszXMLOut, &g_lpszbfullTextOut, &g_lpszbfullXMLOut})
        *setting = nullptr;
    html_output = bProgressMeter = true;
    compWithRef = g_bXCOUNTS = g_bNoPartial = Infeasible_markers_specified = false;
    g_iDemangFlag = 0;
    for (std::vector<std::string>* list :
         {&one_line_disable, &start_disable_block, &end_disable_block, &moduleName})
        list->clear();
    static const std::array<const char*, 7> colors = std::to_array(BGColor);
    std::copy(colors.begin(), colors.end(), BGColor);
}

static void reset_profiles() {
    PGOPTI_Close_Dpi_File(pgofDPIFile);
    PGOPTI_Close_Dpi_File(pgofRefDPIFile);
    pgofDPIFile = pgofRefDPIFile = nullptr;
    PGOPTI_Tool_Set_Name(nullptr);
    componentList = first_func_line = nullptr;
    numComponents = 0;
}

static void reset_product() {
    pars = nullptr;
    outtxt = outxml = nullptr;
    block_exports = nullptr;
    close_open_outputs();
    reset_coverage_list();
    release_source();
    free_function_table();
    reset_configuration();
    reset_profiles();
    totalNumberOfFiles = totalNumberOfFilesCovered = totalNumberOfProcs = totalNumberOfProcsCovered = 0;
    totalNumberOfBlocks = totalNumberOfBlocksCovered = 0;
    functionCoverage = blockCoverage = 0.0;
}

// ---- one call ----

outcome run_product(const std::function<void()>& call) {
    outcome result;
    std::FILE* const real_output = stdout;
    std::FILE* const real_errors = stderr;
    reset_configuration(); // the first call must not differ from the others
    result.errors = written([&](std::FILE* errors) {
        result.output = written([&](std::FILE* output) {
            stdout = output;
            stderr = errors;
            try {
                call();
            } catch (const run_end& end) {
                result.ended = true;
                result.status = end.status;
            }
            reset_product();
        });
    });
    stdout = real_output;
    stderr = real_errors;
    return result;
}
