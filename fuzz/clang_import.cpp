// Input: see import_check.h; the file is a coverage export of clang, which is imported twice.
#include "fuzz/harness.h"
#include "fuzz/import_check.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    import_trial trial = {
        .command = {"vexcov-import", "clang", "-spi", kStaticName, "-dpi", kDynamicName, "-runs", "3"},
        .file = "j",
        .sources = {"flow.cpp", "features.cpp", "features.h", "src/a.c"},
        .options = "j - none . -root .. -runs 0 7 -spi d -help -version -unknown clang src",
        .ascending = true,
    };
    if (size % 2 != 0)
        trial.command.insert(trial.command.end(), {"-root", scratch().path().string() + "/"});
    if (size % 3 == 0)
        trial.command.emplace_back("-instances");
    trial.command.emplace_back("j");
    check_import(trial, {reinterpret_cast<const char*>(data), size});
    return 0;
}
