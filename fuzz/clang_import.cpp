// Input: a coverage export of clang. What the importer makes of it must be a pair of profiles that the
// readers accept and that agree with each other.
#include "fuzz/harness.h"
#include "import/import_run.h"
#include "profile/dpi_file.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

/// The sources of the examples that the corpus starts from: one position in them may matter.
static void write_sources() {
    static const char source[] = "#include \"features.h\"\n"
                                 "int main(int argc, char** argv) {\n"
                                 "    if (argc > 1) /* none */ { return 1; }\n"
                                 "    for (int i = 0; i < argc; ++i)\n"
                                 "        call([&] { return argv[i]; });\n"
                                 "\n"
                                 "#if 0\n"
                                 "    // skipped )\n"
                                 "#endif\n"
                                 "    return argc ? f(')', \"}\") : 2; }\n";
    for (const char* name : {"flow.cpp", "features.cpp", "features.h"})
        write_scratch(name, std::string(source) + source + source + source + source);
}

static void check_pair(std::uint32_t runs) {
    const std::unique_ptr<DPI_FILE> dpi(PGOPTI_Open_Dpi_File("d"));
    require(dpi != nullptr, "the dynamic profile can be opened");
    require(dpi->num_runs == runs, "the number of runs");
    int count = 0;
    std::unordered_map<std::string, const COMP*> routines;
    for (const COMP* comp = GetComponentList("s", &count); comp; comp = comp->next)
        routines.emplace(std::string(comp->fileName) + "'" + comp->procName, comp);
    require(routines.size() == static_cast<std::size_t>(count), "each routine once");
    for (const DPI_INDEX_ENTRY& entry : dpi->index) {
        const auto routine = routines.find(std::string(entry.file_name) + "'" + entry.key_func_name);
        require(routine != routines.end(), "a called routine is in the static profile");
        DPI_SEGMENT* segment = PGOPTI_Get_Segment(dpi.get(), "d", entry.file_name, entry.key_func_name);
        require(segment != nullptr, "a record is found by its name");
        const unsigned char* record = segment->record.data();
        const std::uint32_t blocks = DPI_block_count_get(record);
        require(static_cast<std::uint32_t>(routine->second->blockCount) == blocks && blocks >= 2,
                "both profiles have the same number of blocks");
        DPI_POSITION last = {0, 0};
        for (std::uint32_t i = 0; i < blocks; ++i) {
            const DPI_POSITION at = DPI_block_position_get(record, i);
            require(at.line != 0 && at.column != 0, "positions count from 1");
            require(at.line > last.line || (at.line == last.line && at.column >= last.column),
                    "blocks are in order");
            last = at;
        }
        PGOPTI_Free_Segment(segment);
    }
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool sources_written = (write_sources(), true);
    require(sources_written, "sources");
    write_scratch("i.json", {reinterpret_cast<const char*>(data), size});
    import_options options;
    options.spi_file = "s";
    options.dpi_file = "d";
    options.inputs = {"i.json", "i.json"};
    if (size % 2 != 0)
        options.root = scratch_directory();
    options.runs = static_cast<std::uint32_t>(size) | 1;
    bool written = false;
    const outcome end = run_product([&] {
        run_import(options);
        written = true;
        check_pair(options.runs);
    });
    require(written || end.errors.starts_with("ERROR: "), "a refused export leaves an error");
    require(!written || !end.ended, "the readers accept what was written");
    return 0;
}
