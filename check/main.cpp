// vexcov-check: fails a build whose coverage is too low, or falls, or misses changed lines.
#include "check/check_run.h"
#include "common/fatal.h"
#include "common/message.h"

int main(int argc, char** argv) {
    name_messages("vexcov-check");
    secure_process(closed_output::fails);
    return run_program(run_check, argc, argv);
}
