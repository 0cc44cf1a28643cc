// Input: see import_check.h; the file is JSON of gcov. However it is cut, its documents are the same.
#include "import/gcc/gcov_json.h"
#include "fuzz/harness.h"
#include "fuzz/import_check.h"

/// What the reader makes of the text in pieces of this size.
static std::string documents(std::string_view text, std::size_t piece) {
    std::string result;
    gcov_reader reader([&result](const gcov_document& document) {
        result += std::string(document.view(document.directory)) + "|" + std::to_string(document.clamped);
        for (const gcov_file& file : document.files)
            result += "|" + std::string(document.view(file.name)) + std::to_string(file.lines);
        for (const gcov_function& function : document.functions)
            result += "|" + std::string(document.view(function.name)) + std::to_string(function.entries);
        for (const gcov_line& line : document.lines)
            result += "|" + std::string(document.view(line.function)) + std::to_string(line.count);
    });
    bool fine = true;
    for (; fine && !text.empty(); text.remove_prefix(std::min(piece, text.size())))
        fine = reader.feed(text.substr(0, piece));
    return result + (fine && reader.finish() ? "" : "fault");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view file = imported_file(input);
    require(documents(file, 1) == documents(file, file.size() + 1), "the same documents in any pieces");
    import_trial trial = {
        .command = {"vexcov-import", "gcc", "-spi", kStaticName, "-dpi", kDynamicName},
        .file = "j.json",
        .sources = {"a.c", "src/b.c"},
        .options = "j.json -root . .. -runs 0 7 -all -jobs 2 -version -unknown src",
        .ascending = false,
    };
    if (size % 3 == 0)
        trial.command.emplace_back("-instances");
    check_import(trial, input);
    return 0;
}
