#include "fuzz/import_check.h"

#include "fuzz/harness.h"
#include "import/import_run.h"
#include "profile/dpi_file.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <algorithm>
#include <memory>
#include <tuple>
#include <unordered_map>

/// The input up to the next byte 1, which is taken away with it.
static std::string_view next_part(std::string_view* input) {
    const std::string_view part = input->substr(0, input->find('\1'));
    input->remove_prefix(std::min(input->size(), part.size() + 1));
    return part;
}

std::string_view imported_file(std::string_view input) {
    return next_part(&input);
}

static std::vector<std::string> command_of(const import_trial& trial, std::string_view choices) {
    std::vector<std::string> command = trial.command;
    byte_script script(choices);
    while (!script.empty())
        command.emplace_back(script.one_of(trial.options));
    command.push_back(trial.file);
    return command;
}

static outcome import(const import_trial& trial, const std::vector<std::string>& command) {
    require(std::freopen((scratch().path() / trial.file).c_str(), "r", stdin) != nullptr,
            "the input can be read");
    return run_in_scratch([&] { call_main(run_importer, command); });
}

static void check_record(const DPI_SEGMENT& segment, const COMP& routine, bool ascending) {
    const DPI_RECORD record = segment.view();
    const std::uint32_t blocks = DPI_block_count_get(record);
    const auto common = static_cast<std::uint32_t>(routine.blockCount);
    require(ascending ? common == blocks : common <= blocks,
            "the static profile has no more blocks than this");
    require(common >= 2, "a function has an entry and an end");
    DPI_POSITION last = {1, 1};
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const DPI_POSITION at = DPI_block_position_get(record, i);
        require(at.line >= 1 && at.column >= 1, "positions count from 1");
        require(!ascending || std::tie(at.line, at.column) >= std::tie(last.line, last.column),
                "positions are in order");
        last = at;
    }
}

static void check_pair(bool ascending) {
    const std::unique_ptr<DPI_FILE> dpi(PGOPTI_Open_Dpi_File(kDynamicName));
    require(dpi != nullptr && dpi->num_runs != 0, "the dynamic profile can be opened");
    std::unordered_map<std::string, const COMP*> routines;
    module_list list;
    for (const COMP* comp = GetComponentList(kStaticName, nullptr, nullptr, list); comp; comp = comp->next)
        routines.emplace(std::string(comp->fileName) + "'" + comp->procName, comp);
    for (const DPI_INDEX_ENTRY& entry : dpi->index) {
        const auto routine = routines.find(std::string(entry.file_name) + "'" + entry.key_func_name);
        require(routine != routines.end(), "a called routine is in the static profile");
        DPI_SEGMENT* segment =
            PGOPTI_Get_Segment(dpi.get(), kDynamicName, entry.file_name, entry.key_func_name);
        require(segment != nullptr, "a record is found by its name");
        check_record(*segment, *routine->second, ascending);
        PGOPTI_Free_Segment(segment);
    }
}

void check_import(const import_trial& trial, std::string_view input) {
    clear_scratch();
    scratch().put(trial.file, next_part(&input));
    const std::string_view source = next_part(&input);
    for (const std::string& name : trial.sources)
        scratch().put(name, source);
    const std::vector<std::string> command = command_of(trial, input);
    const outcome end = import(trial, command);
    const std::string dynamic_profile = read_scratch(kDynamicName);
    const std::string static_profile = read_scratch(kStaticName);
    require(end.status == 0 || end.errors.find("ERROR: ") != std::string::npos,
            "a refused input leaves an error");
    require((end.status == 0 && end.output.empty()) == !dynamic_profile.empty(),
            "a profile appears when all is well, and only then");
    if (dynamic_profile.empty() || static_profile.empty())
        return;
    require(!run_in_scratch([&] { check_pair(trial.ascending); }).ended,
            "the readers accept what was written");
    require(import(trial, command).status == 0 && read_scratch(kDynamicName) == dynamic_profile &&
                read_scratch(kStaticName) == static_profile,
            "the same again in the place of the profiles");
}
