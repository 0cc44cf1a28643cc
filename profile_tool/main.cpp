// vexcov-profile: shows, checks and adds up profiles.
#include "common/fatal.h"
#include "common/message.h"
#include "profile_tool/tool_run.h"

int main(int argc, char** argv) {
    name_messages("vexcov-profile");
    secure_process(closed_output::fails);
    return run_program(run_profile_tool, argc, argv);
}
