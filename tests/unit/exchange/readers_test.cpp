// What vexcov-export writes is read by the programs that it is meant for, as far as they are installed:
// tests/check-exports runs them.
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

void check_exports(const fs::path& directory, const std::string& options) {
    const program_result result =
        run_command("python3 '" VEXCOV_TEST_DATA "/check-exports' vexcov-export . " + options, directory,
                    "/usr/bin:/bin");
    EXPECT_EQ(result.status, 0) << result.standard_error << result.standard_output;
}

/// Copies the input of a golden case.
void place_case(const std::string& name, const scratch_directory& scratch) {
    fs::copy(fs::path(VEXCOV_TEST_DATA) / "golden/cases" / name / "input", scratch.path(),
             fs::copy_options::recursive);
    scratch.put("pgopti.dpi", compile_profile_text(read_file(scratch.path() / "pgopti.dpitext")));
}

TEST(ExportReaders, ReadAllFormats) {
    const scratch_directory scratch;
    place_case("first-report", scratch);
    check_exports(scratch.path(), "");
}

TEST(ExportReaders, NamesAreKeptApartFromMarkup) {
    const scratch_directory scratch;
    place_case("exchange", scratch);
    check_exports(scratch.path(), "-prj '<|\"&>'");
}

TEST(ExportReaders, NamesOfAnyBytes) {
    const scratch_directory scratch;
    std::string static_profile;
    std::string dynamic_profile = "header runs 1\n";
    // Control characters, no UTF-8, surrogates and an overlong form, and characters beyond the first plane.
    for (const char* name :
         {"a\x01\x1b[31m.c", "b\xff\xfe.c", "c\xed\xa0\x80\xc0\xaf.c", "d\xf0\x9f\x98\x80:,%.c"}) {
        scratch.put(name, "int f() {\n    return 1;\n}\n");
        static_profile += std::string(name) + " - f" + name + " 1 2 I\n";
        dynamic_profile +=
            "record 64\nfile " + std::string(name) + "\nfunction f" + name + "\nblocks 1:9=1 2:5=0\n";
    }
    scratch.put("pgopti.spi", static_profile);
    scratch.put("pgopti.dpi", compile_profile_text(dynamic_profile));
    check_exports(scratch.path(), "");
}

} // namespace
