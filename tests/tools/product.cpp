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
#include <fcntl.h>
#include <memory>
#include <type_traits>
#include <unistd.h>

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

/// What is written to the stream during the call. Where the C library has no variable for the stream, as musl
/// has none, its descriptor leads into a file meanwhile.
template <typename Stream> static std::string caught(Stream& stream, const std::function<void()>& call) {
    if constexpr (std::is_const_v<Stream>) {
        const scratch_directory place;
        const int descriptor = fileno(stream);
        std::fflush(stream);
        const int real = dup(descriptor);
        const int file = open((place.path() / "text").c_str(), O_WRONLY | O_CREAT, 0600);
        dup2(file, descriptor);
        call();
        std::fflush(stream);
        dup2(real, descriptor);
        close(file);
        close(real);
        return read_file(place.path() / "text");
    } else {
        std::FILE* const real = stream;
        std::string text = written([&](std::FILE* file) {
            stream = file;
            call();
        });
        stream = real;
        return text;
    }
}

outcome run_product(const std::function<void()>& call) {
    outcome result;
    reset_configuration(); // the first call must not differ from the others
    result.errors = caught(stderr, [&] {
        result.output = caught(stdout, [&] {
            try {
                call();
            } catch (const run_end& end) {
                result.ended = true;
                result.status = end.status;
            }
            reset_product();
        });
    });
    return result;
}
