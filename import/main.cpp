// vexcov-import: turns the coverage exports of other tools into a profile that vexcov reads.
#include "common/fatal.h"
#include "common/message.h"
#include "import/import_run.h"

int main(int argc, char** argv) {
    name_messages("vexcov-import");
    secure_process();
    return run_program(run_importer, argc, argv);
}
