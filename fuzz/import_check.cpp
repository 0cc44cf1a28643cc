#include "fuzz/import_check.h"

#include "fuzz/harness.h"
#include "profile/dpi_file.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

// The importer's main goes by another name here.
int line_import_main(int argc, char** argv);
#define main line_import_main
#include "import/main.cpp"
#undef main

static std::string_view next_part(std::string_view* input) {
    const std::string_view part = input->substr(0, input->find('\1'));
    input->remove_prefix(std::min(input->size(), part.size() + 1));
    return part;
}

std::string_view imported_file(std::string_view input) {
    return next_part(&input);
}

static std::vector<std::string> arguments(const std::string& format, const std::string& name,
                                          std::string_view choices) {
    std::vector<std::string> result = {"vexcov-import", format, "-spi", "s", "-dpi", "d"};
    byte_script script(choices);
    while (!script.empty()) {
        const std::string_view word =
            script.one_of("again -root . .. -runs 0 7 -all -jobs 2 -version -unknown src");
        result.emplace_back(word == "again" ? name : word);
    }
    result.push_back(name);
    return result;
}

static void check_record(const DPI_SEGMENT& segment, const COMP& routine) {
    const unsigned char* record = segment.record.data();
    const std::uint32_t blocks = DPI_block_count_get(record);
    require(static_cast<std::uint32_t>(routine.blockCount) == blocks && blocks >= 2,
            "both profiles have the same number of blocks");
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const DPI_POSITION at = DPI_block_position_get(record, i);
        require(at.line >= 1 && at.column >= 1, "positions count from 1");
    }
}

static void check_pair() {
    const std::unique_ptr<DPI_FILE> dpi(PGOPTI_Open_Dpi_File("d"));
    require(dpi != nullptr && dpi->num_runs != 0, "the dynamic profile can be opened");
    int count = 0;
    std::unordered_map<std::string, const COMP*> routines;
    for (const COMP* comp = GetComponentList("s", &count); comp; comp = comp->next)
        routines.emplace(std::string(comp->fileName) + "'" + comp->procName, comp);
    for (const DPI_INDEX_ENTRY& entry : dpi->index) {
        const auto routine = routines.find(std::string(entry.file_name) + "'" + entry.key_func_name);
        require(routine != routines.end(), "a called routine is in the static profile");
        DPI_SEGMENT* segment = PGOPTI_Get_Segment(dpi.get(), "d", entry.file_name, entry.key_func_name);
        require(segment != nullptr, "a record is found by its name");
        check_record(*segment, *routine->second);
        PGOPTI_Free_Segment(segment);
    }
}

void check_import(const std::string& format, const std::string& name, std::string_view input) {
    clear_scratch();
    scratch().put(name, next_part(&input));
    const std::string_view source = next_part(&input);
    for (const char* file : {"a.c", "src/b.c"})
        scratch().put(file, source);
    const std::vector<std::string> command = arguments(format, name, input);
    const auto run = [&command] {
        return run_in_scratch([&command] { call_main(line_import_main, command); });
    };
    const outcome end = run();
    const std::string dynamic_profile = read_scratch("d");
    const std::string static_profile = read_scratch("s");
    require(end.ended && (end.status == 0 || end.errors.find("ERROR: ") != std::string::npos),
            "a refused input leaves an error");
    require((end.status == 0 && end.output.empty()) == !dynamic_profile.empty(),
            "a profile appears when all is well, and only then");
    if (dynamic_profile.empty() || static_profile.empty())
        return;
    require(!run_in_scratch(check_pair).ended, "the readers accept what was written");
    require(run().status == 0 && read_scratch("d") == dynamic_profile && read_scratch("s") == static_profile,
            "the same again in the place of the profiles");
}
