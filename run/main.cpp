// vexcov-run: runs the tests of a program and makes the report of what they covered.
#include "common/fatal.h"
#include "common/message.h"
#include "run/run.h"
#include "run/signal_watch.h"

int main(int argc, char** argv) {
    note_signals();
    name_messages("vexcov-run");
    secure_process();
    return run_program(run_tests, argc, argv);
}
