// vexcov-site: the coverage of a program as a web site of plain pages.
#include "common/fatal.h"
#include "common/message.h"
#include "site/site_run.h"

int main(int argc, char** argv) {
    name_messages("vexcov-site");
    secure_process();
    return run_program(run_site, argc, argv);
}
