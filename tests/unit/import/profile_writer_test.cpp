#include "import/profile_writer.h"

#include "import/source_names.h"
#include "tests/tools/scratch.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

TEST(ProfileWriter, VersionHeadForLongNames) {
    const scratch_directory scratch;
    const auto written_for = [&scratch](const std::string& file, const std::string& function) {
        profile_data profile;
        profile.files = {file};
        profile.records.push_back({0, "f", 3, 2, true, {{{3, 10}, 258}, {{5, 1}, 0}}});
        profile.records.push_back({0, function, 7, 4, false, {}});
        write_profiles(profile, scratch.path() / "p.dpi", scratch.path() / "p.spi", 2);
        return read_file(scratch.path() / "p.spi").substr(0, 30);
    };
    EXPECT_TRUE(written_for("a.c", std::string(4095, 'g')).starts_with("a.c - f "));
    EXPECT_TRUE(written_for("a.c", std::string(4096, 'g')).starts_with("V1 4096 4096 4097\na.c - f "));
    EXPECT_TRUE(
        written_for(std::string(70000, 'a'), std::string(4096, 'g')).starts_with("V1 70001 4096 4097\naaa"));
}

TEST(ProfileWriter, WaitsForTheLockOfTheOldProfile) {
    const scratch_directory scratch;
    const int held = open(scratch.put("p.dpi", "old").c_str(), O_RDWR);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_start = 16;
    ASSERT_EQ(fcntl(held, F_SETLK, &lock), 0);
    scratch.put("x.json",
                R"({"type":"llvm.coverage.json.export","version":"2.0.1","data":[{"functions":[{"name":"f",)"
                R"("count":1,"filenames":["a.c"],"regions":[[1,1,2,2,1,0,0,0]]}]}]})");
    const auto import = [&scratch](const std::string& seconds) {
        return run_command("/usr/bin/timeout " + seconds + " vexcov-import clang -dpi p.dpi x.json",
                           scratch.path(), "")
            .status;
    };
    EXPECT_EQ(import("0.3"), 124) << "it waits";
    EXPECT_EQ(read_file(scratch.path() / "p.dpi"), "old");
    close(held);
    EXPECT_EQ(import("30"), 0);
    EXPECT_NE(read_file(scratch.path() / "p.dpi"), "old");
}

TEST(SourceNames, RootMayBeRelative) {
    const std::string here = std::filesystem::current_path();
    const source_names names("x/..");
    EXPECT_EQ(names.name_in_profile(here + "/src/../src/a.c"), "src/a.c");
    EXPECT_EQ(names.name_in_profile(here + "x/a.c"), here + "x/a.c");
    EXPECT_EQ(names.path_of("src/a.c"), here + "/src/a.c");
}
