#include "export/function_coverage.h"

#include "common/fatal.h"
#include "common/number_format.h"
#include "coverage/files_of_interest.h"
#include "demangle/demangle.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "profile/dpi_file.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_record.h"

#include <cstring>
#include <string_view>

namespace {

/// What one function's line or element shows.
struct function_figures {
    const char* name; ///< demangled; valid until the next demangling
    char freq[kNumberTextSize];
    std::uint32_t blocks;
    std::uint32_t covered;
    double coverage; ///< percent
};

/// How one of the two formats writes its pieces.
struct export_format {
    void (*first_heading)(std::FILE* stream, const char* file);
    void (*next_heading)(std::FILE* stream, const char* file);
    void (*function)(std::FILE* stream, const function_figures& figures);
};

} // namespace

/// Writes the function of the pair and returns true, or returns false when it has no record or is not
/// covered.
static bool write_function(std::FILE* stream, const export_format& format, std::string_view file,
                           const char* function) {
    DPI_SEGMENT* segment = PGOPTI_Get_Segment(pgofDPIFile, g_lpszDPIFileName, file, function);
    if (!segment)
        return false;
    const DPI_RECORD record = segment->view();
    function_figures figures = {};
    figures.blocks = DPI_block_count_get(record);
    figures.covered = DPI_covered_blocks(record);
    const bool covered = figures.blocks != 0 && figures.covered != 0;
    if (covered) {
        std::size_t length = 0;
        figures.name = demangleName(function, g_iDemangFlag, &length);
        u64_to_ascii_no_sep(figures.freq, DPI_entry_frequency(record));
        figures.coverage = figures.covered * 100.0 / figures.blocks;
        format.function(stream, figures);
    }
    PGOPTI_Free_Segment(segment);
    return covered;
}

/// The walk over the records that both formats share.
static void write_covered_functions(std::FILE* stream, const export_format& format) {
    const char* file = nullptr;
    const char* function = nullptr;
    PGOPTI_Get_First_File_Function_Pair(pgofDPIFile, &file, &function);
    if (!file || !function) {
        std::fprintf(stderr, "%s is corrupt!\n", g_lpszDPIFileName);
        pgt_Exit(1);
    }
    const char* heading = nullptr; // the file of the last heading
    const char* known = nullptr;   // the file that the next two belong to; records share their file names,
    std::string_view text;         // so that even a long one is measured only once
    bool wanted = false;
    for (std::uint32_t pass = 0; pass < pgofDPIFile->num_records && file; ++pass) {
        if (file != known) {
            wanted = isInComponents(file, function, function);
            text = file;
        }
        known = file;
        if (wanted && heading != file && (!heading || std::strcmp(heading, file) != 0)) {
            (heading ? format.next_heading : format.first_heading)(stream, file);
            heading = file;
        }
        // Deliberate: the export lists the covered functions up to the first record that is not of interest
        // or not covered. Every further pass would look at that same record again, with the same outcome.
        if (!wanted || !write_function(stream, format, text, function))
            break;
        PGOPTI_Get_Next_File_Function_Pair(pgofDPIFile, &file, &function);
    }
}

static void first_text_heading(std::FILE* stream, const char* file) {
    std::fprintf(stream, "Covered Functions in File: \"%s\"\n", file);
}

static void next_text_heading(std::FILE* stream, const char* file) {
    std::fprintf(stream, "\nCovered Functions in File: \"%s\"\n", file);
}

static void write_text_function(std::FILE* stream, const function_figures& figures) {
    std::fprintf(stream, "\"%s\"\t%s\t%d\t%d\t%6.2f\n", figures.name, figures.freq,
                 static_cast<int>(figures.blocks), static_cast<int>(figures.covered), figures.coverage);
}

bool bOutputFunctionCoverageTxt(std::FILE* stream) {
    write_covered_functions(stream, {first_text_heading, next_text_heading, write_text_function});
    return true;
}

// Deliberate: neither export escapes names. Scripts look for them as the compiler and the text export write
// them.
static void first_xml_heading(std::FILE* stream, const char* file) {
    std::fprintf(stream, "<MODULE name = \"%s\">\n", file);
}

static void next_xml_heading(std::FILE* stream, const char* file) {
    std::fputs("</MODULE>\n", stream);
    std::fprintf(stream, "<MODULE name = \"%s\">\n", file);
}

static void write_xml_function(std::FILE* stream, const function_figures& figures) {
    std::fprintf(stream, "<FUNCTION name=\"%s\" freq=\"%s\">\n", figures.name, figures.freq);
    std::fprintf(stream, "<BLOCKS total=\"%d\" covered=\"%d\" coverage=\"%6.2f%%\">",
                 static_cast<int>(figures.blocks), static_cast<int>(figures.covered), figures.coverage);
    std::fputs("</BLOCKS>\n</FUNCTION>\n", stream);
}

bool bOutputFunctionCoverageXML(std::FILE* stream) {
    write_covered_functions(stream, {first_xml_heading, next_xml_heading, write_xml_function});
    // Deliberate: also where no module was begun, so that every export ends in the same way.
    std::fputs("</MODULE>\n", stream);
    return true;
}
