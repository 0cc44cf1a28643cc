#include "common/companion.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/version.h"

#include <cstdio>
#include <cstring>
#include <string_view>

static void print_version(const companion& program) {
    std::printf("%s %s\n", program.name, program_version());
    program.print_formats();
}

bool take_common_option(const companion& program, const char* argument) {
    std::string_view option = argument;
    if (option.starts_with("--"))
        option.remove_prefix(1);
    if (option == "-help")
        program.print_usage();
    else if (option == "-version")
        print_version(program);
    else
        return false;
    pgt_Exit(0);
}

void refuse_option(const companion& program, const char* argument) {
    end_with_error("unknown option %s (%s -help lists the options)", printable(argument).c_str(),
                   program.name);
}

void refuse_missing_value(const char* option, const char* missing) {
    end_with_error("option %s needs %s", option, missing);
}

void check_value(const char* option, const char* missing, const char* value) {
    if (!value || *value != '\0')
        return;
    for (const char* const named : {"file", "directory", "program"})
        if (std::strstr(missing, named))
            end_with_error("option %s needs %s, not an empty name", option, missing);
}
