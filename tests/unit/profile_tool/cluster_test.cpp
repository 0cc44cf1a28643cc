// The example that merges on a cluster, with workers of this machine.
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

TEST(Cluster, TwoWorkersGiveTheBytesOfOneMachine) {
    const scratch_directory scratch;
    const auto run = [&](const std::string& command) {
        return run_command(command, scratch.path(), "/usr/bin:/bin");
    };
    if (run("python3 -c 'import distributed'").status != 0)
        GTEST_SKIP() << "no python3-distributed";
    const std::string example = VEXCOV_TEST_DATA "/../examples/cluster/merge_shards.py";
    std::string names;
    std::string profiles;
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(i);
        scratch.put("a.c", "int f(void)\n{\n    return 1;\n}\nint g(void)\n{\n    return 2;\n}\n");
        scratch.put(number + ".info", "SF:a.c\nFN:1,f\nFN:5,g\nFNDA:" + number + ",f\nFNDA:0,g\nDA:3," +
                                          number + "\nDA:7,0\nend_of_record\n");
        EXPECT_EQ(
            run("vexcov-import lcov -dpi " + number + ".dpi -spi " + number + ".spi " + number + ".info")
                .status,
            0);
        names += " " + number + ".info";
        profiles += " " + number + ".dpi";
    }
    EXPECT_EQ(run("vexcov-profile merge -o one" + profiles).status, 0);
    const program_result cluster = run(example + " --format lcov many" + names);
    EXPECT_EQ(cluster.status, 0) << cluster.standard_error;
    EXPECT_EQ(read_file(scratch.path() / "many.dpi"), read_file(scratch.path() / "one.dpi"));
    EXPECT_EQ(read_file(scratch.path() / "many.spi"), read_file(scratch.path() / "one.spi"));
    EXPECT_NE(run("vexcov-profile show many.dpi").standard_output.find("=190"), std::string::npos);
    const program_result refused = run(example + " --workers 1 --format lcov none a.c");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.standard_error.find("a.c"), std::string::npos);
}
