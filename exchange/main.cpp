// vexcov-export: writes coverage in the formats of other programs.
#include "common/fatal.h"
#include "common/message.h"
#include "exchange/exchange_run.h"

int main(int argc, char** argv) {
    name_messages("vexcov-export");
    secure_process(closed_output::fails);
    return run_program(run_exchange, argc, argv);
}
