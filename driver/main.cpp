// vexcov: a code-coverage report from a dynamic and a static profile.
#include "common/fatal.h"
#include "driver/run.h"

int main(int argc, char** argv) {
    secure_process();
    return run_program(run_report, argc, argv);
}
