// Input: a coverage export of clang, a byte 1, the text of its source files, a byte 1, and the options of the
// command line, a byte each. What the importer makes of it must be a pair of profiles that the readers accept
// and that agree with each other, and it must make the same of it again when it finds them.
#include "fuzz/harness.h"
#include "import/import_run.h"
#include "profile/dpi_file.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

/// The input up to the next byte 1, which is taken away with it.
static std::string_view next_part(std::string_view* input) {
    const std::string_view part = input->substr(0, input->find('\1'));
    input->remove_prefix(std::min(input->size(), part.size() + 1));
    return part;
}

static std::vector<std::string> arguments(std::string_view choices, bool below_root) {
    std::vector<std::string> result = {"vexcov-import", "clang", "-spi", "s", "-dpi", "d", "-runs", "3"};
    if (below_root)
        result.insert(result.end(), {"-root", scratch().path().string() + "/"});
    byte_script script(choices);
    while (!script.empty())
        result.emplace_back(
            script.one_of("j - none . -root .. -runs 0 7 -spi d -help -version -unknown clang src"));
    result.emplace_back("j");
    result.emplace_back("j");
    return result;
}

static outcome import_again(const std::vector<std::string>& arguments) {
    std::FILE* const real_input = stdin;
    stdin = std::fopen((scratch().path() / "j").c_str(), "r");
    outcome end = run_in_scratch([&] { call_main(run_importer, arguments); });
    std::fclose(stdin);
    stdin = real_input;
    return end;
}

static void check_record(const DPI_SEGMENT& segment, const COMP& routine) {
    const DPI_RECORD record = segment.view();
    const std::uint32_t blocks = DPI_block_count_get(record);
    require(static_cast<std::uint32_t>(routine.blockCount) == blocks && blocks >= 2,
            "both profiles have the same number of blocks");
    DPI_POSITION last = {1, 1};
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const DPI_POSITION at = DPI_block_position_get(record, i);
        require(at.line > last.line || (at.line == last.line && at.column >= last.column),
                "positions count from 1 and are in order");
        last = at;
    }
}

static void check_pair() {
    const std::unique_ptr<DPI_FILE> dpi(PGOPTI_Open_Dpi_File("d"));
    require(dpi != nullptr && dpi->num_runs != 0, "the dynamic profile can be opened");
    int count = 0;
    std::unordered_map<std::string, const COMP*> routines;
    module_list list;
    for (const COMP* comp = GetComponentList("s", &count, nullptr, list); comp; comp = comp->next)
        routines.emplace(std::string(comp->fileName) + "'" + comp->procName, comp);
    require(routines.size() == static_cast<std::size_t>(count), "each routine once");
    for (const DPI_INDEX_ENTRY& entry : dpi->index) {
        const auto routine = routines.find(std::string(entry.file_name) + "'" + entry.key_func_name);
        require(routine != routines.end(), "a called routine is in the static profile");
        DPI_SEGMENT* segment = PGOPTI_Get_Segment(dpi.get(), "d", entry.file_name, entry.key_func_name);
        require(segment != nullptr, "a record is found by its name");
        check_record(*segment, *routine->second);
        PGOPTI_Free_Segment(segment);
    }
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    clear_scratch();
    scratch().put("j", next_part(&input));
    const std::string_view source = next_part(&input);
    for (const char* name : {"flow.cpp", "features.cpp", "features.h", "src/a.c"})
        scratch().put(name, source);
    const std::vector<std::string> command = arguments(input, size % 2 != 0);
    const outcome end = import_again(command);
    const std::string dynamic_profile = read_scratch("d");
    const std::string static_profile = read_scratch("s");
    require(end.status == 0 || end.errors.find("ERROR: ") != std::string::npos,
            "a refused export leaves an error");
    require((end.status == 0 && end.output.empty()) == !dynamic_profile.empty(),
            "a profile appears when all is well, and only then");
    if (dynamic_profile.empty() || static_profile.empty())
        return 0;
    require(!run_in_scratch(check_pair).ended, "the readers accept what was written");
    require(import_again(command).status == 0 && read_scratch("d") == dynamic_profile &&
                read_scratch("s") == static_profile,
            "the same again in the place of the profiles");
    return 0;
}
