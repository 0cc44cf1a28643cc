#include "profile_tool/tool_run.h"

#include "profile_tool/check_command.h"
#include "profile_tool/merge_command.h"
#include "profile_tool/show_command.h"
#include "profile_tool/tool_options.h"

void run_profile_tool(int argc, char** argv) {
    tool_options options;
    parse_tool_options(argc, argv, &options);
    switch (options.command) {
    case tool_command::show:
        return show_profile(options);
    case tool_command::check:
        return check_profile(options);
    case tool_command::merge:
        return merge_profiles(options);
    }
}
