// Input: see import_check.h; the file is an LCOV trace. Read twice, it holds the same functions and lines.
#include "fuzz/harness.h"
#include "fuzz/import_check.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string file(imported_file(input));
    import_trial trial = {
        .command = {"vexcov-import", "lcov", "-spi", kStaticName, "-dpi", kDynamicName},
        .file = "t.info",
        .sources = {"a.c", "src/b.c"},
        .options = "t.info -root . .. -runs 0 7 -all -jobs 2 -version -unknown src",
        .ascending = false,
    };
    if (size % 3 == 0)
        trial.command.emplace_back("-instances");
    check_import(trial, input);
    check_import(trial, file);
    const std::string once = read_scratch(kStaticName);
    check_import(trial, file + (file.ends_with('\n') ? "" : "\n") + file);
    require(once.empty() || read_scratch(kStaticName) == once,
            "the same static profile when all comes again");
    return 0;
}
