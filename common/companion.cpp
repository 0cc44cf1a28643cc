#include "common/companion.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/version.h"

#include <cstdio>
#include <string_view>

bool take_common_option(const companion& program, const char* argument) {
    std::string_view option = argument;
    if (option.starts_with("--"))
        option.remove_prefix(1);
    if (option == "-help")
        program.print_usage();
    else if (option == "-version")
        std::printf("%s %s\n", program.name, program_version());
    else
        return false;
    pgt_Exit(0);
}

void refuse_option(const companion& program, const char* argument) {
    end_with_error("unknown option %s (%s -help lists the options)", printable(argument).c_str(),
                   program.name);
}

void refuse_missing_value(const char* option, const char* missing) {
    if (!std::string_view(missing).starts_with("ERROR:"))
        end_with_error("option %s needs %s", option, missing);
    std::fprintf(stderr, "%s\n", missing);
    pgt_Exit(1);
}
