#include "driver/command_line.h"

#include "common/checked_alloc.h"
#include "common/fatal.h"
#include "common/message.h"
#include "common/option_table.h"
#include "driver/banner.h"
#include "driver/color_table.h"
#include "driver/run_config.h"

#include <cstdio>
#include <cstring>

static bool not_feasible_color_given = false; ///< -xcolor was among the options of this call

static void replace_setting(char*& setting, const char* value) {
    release_setting(setting);
    setting = copy_string(value, "option value");
}

static void set_reference(const char* value) {
    replace_setting(g_lpszRefDPIFileName, value);
    compWithRef = true;
}

static void set_mail_address(const char* value) {
    replace_setting(g_lpszMailAddr, value);
    if (!g_lpszMailName)
        replace_setting(g_lpszMailName, value);
}

static void set_not_feasible_color(const char* value) {
    SetBGColor(clrNotFeasible, value);
    not_feasible_color_given = true;
}

static void set_text_export(const char* value) {
    g_lpszTextOut = value;
    html_output = false;
}

static void set_xml_export(const char* value) {
    g_lpszXMLOut = value;
    html_output = false;
}

static void add_marker(std::vector<std::string>& markers, const char* value) {
    markers.push_back(value);
    Infeasible_markers_specified = true;
}

/// Where no message for a missing value is given, the usage text is shown.
static const option_row<> options[] = {
    {"-spi", [](const char* v) { replace_setting(g_lpszSPIFileName, v); }, true, nullptr},
    {"-dpi", [](const char* v) { replace_setting(g_lpszDPIFileName, v); }, true, nullptr},
    {"-ref", set_reference, true, nullptr},
    {"-demang", [](const char*) { g_iDemangFlag = 1; }, false, nullptr},
    {"-prj", [](const char* v) { replace_setting(g_lpszProjName, v); }, true, nullptr},
    {"-comp", [](const char* v) { moduleListName = v; }, true, "ERROR: no component-list file specified."},
    {"-counts", [](const char*) { g_bXCOUNTS = true; }, false, nullptr},
    {"-nopartial", [](const char*) { g_bNoPartial = true; }, false, nullptr},
    {"-nopmeter", [](const char*) { bProgressMeter = false; }, false, nullptr},
    {"-maddr", set_mail_address, true, nullptr},
    {"-mname", [](const char* v) { replace_setting(g_lpszMailName, v); }, true, nullptr},
    {"-bcolor", [](const char* v) { SetBGColor(clrUncoveredBlock, v); }, true,
     "ERROR: no html color specified for the uncovered blocks."},
    {"-ccolor", [](const char* v) { SetBGColor(clrCovered, v); }, true,
     "ERROR: no html color specified for the covered code."},
    {"-fcolor", [](const char* v) { SetBGColor(clrUncoveredFunc, v); }, true,
     "ERROR: no html color specified for the uncovered functions."},
    {"-pcolor", [](const char* v) { SetBGColor(clrPartial, v); }, true,
     "ERROR: no html color specified for the partially-covered code."},
    {"-ucolor", [](const char* v) { SetBGColor(clrUnknown, v); }, true,
     "ERROR: no html color specified for the unknown code."},
    {"-xcolor", set_not_feasible_color, true, "ERROR: no html color specified for the not feasible code."},
    {"-txtfcvrg", set_text_export, true, "ERROR: file name for text output is not specified."},
    {"-xmlfcvrg", set_xml_export, true, "ERROR: file name for XML output is not specified."},
    {"-txtbcvrgfull", [](const char* v) { g_lpszbfullTextOut = v; }, true,
     "ERROR: file name for text block coverage output is not specified."},
    {"-xmlbcvrgfull", [](const char* v) { g_lpszbfullXMLOut = v; }, true,
     "ERROR: file name for XML block coverage output is not specified."},
    {"-onelinedsbl", [](const char* v) { add_marker(one_line_disable, v); }, true,
     "ERROR: comment for disable line is not specified."},
    {"-endblkdsbl", [](const char* v) { add_marker(end_disable_block, v); }, true,
     "ERROR: comment for end disable block is not specified."},
    {"-beginblkdsbl", [](const char* v) { add_marker(start_disable_block, v); }, true,
     "ERROR: comment for begin disable block is not specified."},
};

static const char* const help_options[] = {"-?", "/?", "-help", "/help", "-h", "/h"};

static bool is_help(const char* argument) {
    for (const char* help : help_options)
        if (std::strcmp(argument, help) == 0)
            return true;
    return false;
}

static void assign_defaults() {
    replace_setting(g_lpszSPIFileName, "pgopti.spi");
    replace_setting(g_lpszDPIFileName, "pgopti.dpi");
    replace_setting(g_lpszOutFileExt, "html");
    scale = 1.0L;
    sortType = 0;
    g_bXCOUNTS = false;
    g_bNoPartial = false;
    g_iDemangFlag = 0;
    bProgressMeter = true;
    not_feasible_color_given = false;
}

/// Handles every argument; false when the usage text is to be shown.
static bool read_arguments(int argc, char** argv) {
    for (argument_reader arguments(options, argc, argv); arguments.next();) {
        switch (arguments.kind()) {
        case argument_kind::option:
            arguments.option().apply(arguments.value());
            break;
        case argument_kind::missing_value:
            if (!arguments.option().missing)
                return false;
            std::fprintf(stderr, "%s\n", arguments.option().missing);
            pgt_Exit(1);
        case argument_kind::unknown:
        case argument_kind::positional:
            // Deliberate: arguments of other tools of a build script may stand among ours
            if (is_help(arguments.text()))
                return false;
        }
    }
    return true;
}

/// Differential coverage has neither partial coverage nor counts.
static void override_for_reference() {
    if (g_bNoPartial) {
        print_warning("option -ref overrides option -nopartial.");
        g_bNoPartial = false;
    }
    if (g_bXCOUNTS) {
        print_warning("option -ref overrides option -counts.");
        g_bXCOUNTS = false;
    }
}

bool bParseCommandLine(int argc, char** argv) {
    assign_defaults();
    if (!read_arguments(argc, argv))
        return false;
    if (!not_feasible_color_given)
        SetBGColor(clrNotFeasible, takeBGColor(clrUnknown));
    if (!g_lpszMailAddr)
        replace_setting(g_lpszMailAddr, "nobody");
    if (!g_lpszMailName)
        replace_setting(g_lpszMailName, "Nobody");
    if (compWithRef)
        override_for_reference();
    if (g_bNoPartial)
        SetNoPartialColor();
    PrintVersion();
    return true;
}
