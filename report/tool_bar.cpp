#include "report/tool_bar.h"

#include "common/message.h"
#include "common/output_file.h"
#include "report/help_page.h"
#include "report/images.h"
#include "report/page_names.h"
#include "report/page_pieces.h"

#include <cstdio>

/// Writes the four images; false after a message.
static bool create_images() {
    if (!createHomeIcon(kHomeGif)) {
        print_unopened("Unable to create the Home Icon %s!", kHomeGif);
        return false;
    }
    if (!createHelpIcon(kHelpGif)) {
        // Deliberate: "Home" for the help icon too. The file name tells them apart, and one text is matched.
        print_unopened("Unable to create the Home Icon %s!", kHelpGif);
        return false;
    }
    if (!createVexalRLogo(kLogoGif)) {
        print_unopened("Unable to create Vexal Logo %s!", kLogoGif);
        return false;
    }
    if (!createSpacer(kSpacerGif)) {
        print_unopened("Unable to create Spacer image %s!", kSpacerGif);
        return false;
    }
    return true;
}

// A line of the page is a line here.
// clang-format off

/// The page lies in the report directory but is the top frame of every module, so its links go up first.
static void write_tool_bar(std::FILE* page, const char* ext) {
    std::fputs("<html>\n"
               "<head>\n"
               R"(<base target="_parent">)" "\n"
               "</head>\n"
               R"(<body bgcolor="FFFFFF">)" "\n"
               "<table border=0 cellpadding=3 cellspacing=0>\n"
               "<tr>\n"
               "<td>\n", page);
    std::fprintf(page, R"(<a href="../%s" title="Coverage Summary"><img src="%s" %s></a>)" "\n",
                 getHTMLname("Code_Coverage", ext), kHomeGif, R"(border="0")");
    std::fputs("</td>\n"
               "<td>\n", page);
    std::fprintf(page, R"(<a target="_new" href="../%s" title="Help"><img src="%s" %s></a>)" "\n",
                 getDirHTMLname("__Help", ext), kHelpGif, R"(border="0")");
    std::fputs("</td>\n"
               R"(<td width="100%" align="right">)" "\n", page);
    std::fprintf(page, R"(<a target="_new" href="%s">)", kMakerHomePage);
    std::fprintf(page, R"(<img src="%s" %s></a>)" "\n", kLogoGif, R"(border="0")");
    std::fputs("</td>\n"
               "</tr>\n"
               "</table>\n"
               "</body>\n"
               "</html>\n", page);
}

// clang-format on

bool createToolBar(const char* ext) {
    std::FILE* page = open_output(getDirHTMLname("__ToolBar", ext), "wt");
    if (!page) {
        print_unopened("Unable to create ToolBar file!");
        return false;
    }
    // Where one of the following fails, the tool bar stays behind empty; the end of the run closes it.
    if (!create_images())
        return false;
    if (!createOnLineHelp(ext)) {
        print_unopened("Unable to create On-Line Help!");
        return false;
    }
    write_tool_bar(page, ext);
    close_output(page);
    return true;
}
