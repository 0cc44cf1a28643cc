// vexcov-import: turns the coverage exports of other tools into a profile that vexcov reads.
#include "common/fatal.h"
#include "import/import_message.h"
#include "import/import_options.h"
#include "import/import_run.h"

#include <new>

int main(int argc, char** argv) {
    secure_process();
    try {
        import_options options;
        parse_import_options(argc, argv, &options);
        run_import(options);
    } catch (const std::bad_alloc&) {
        import_error("out of memory");
    }
    pgt_Exit(0);
}
