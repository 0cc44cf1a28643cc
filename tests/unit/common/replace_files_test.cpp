#include "common/replace_files.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <set>

/// The files of a directory with what they hold.
static std::set<std::string> files_in(const scratch_directory& scratch) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path()))
        files.insert(entry.path().filename().string() + (entry.is_directory() ? "" : "=" + read_file(entry)));
    return files;
}

/// Writes "new" to the first `count` files.
static void write_new(file_replacement& files, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::FILE* stream = files.open(i);
        ASSERT_TRUE(stream);
        std::fputs("new", stream);
        EXPECT_TRUE(files.close(stream));
    }
}

TEST(ReplaceFiles, TogetherOrNotAtAll) {
    using names = std::set<std::string>;
    const scratch_directory scratch;
    const std::string a = scratch.put("a", "old"), b = (scratch.path() / "b").string();
    const std::string c = (scratch.path() / "c").string();
    {
        file_replacement files({a, b, c});
        write_new(files, 2);
    }
    EXPECT_EQ(files_in(scratch), names({"a=old"})) << "given up half-way";
    {
        file_replacement files({a, b, c});
        EXPECT_TRUE(files.check_targets());
        write_new(files, 3);
        std::filesystem::create_directory(c); // the last one cannot be replaced any more
        EXPECT_FALSE(files.replace());
        EXPECT_EQ(files.error(), "cannot replace " + a + ", " + b + " and " + c + ": Is a directory");
        EXPECT_EQ(files_in(scratch), names({"a=old", "c"})) << "what was there is back, what was not is gone";
        EXPECT_FALSE(files.check_targets());
        EXPECT_EQ(files.error(), c + " is not a regular file; name another");
    }
    std::filesystem::remove(c);
    file_replacement files({a, b, c});
    write_new(files, 3);
    EXPECT_TRUE(files.replace());
    EXPECT_EQ(files_in(scratch), names({"a=new", "b=new", "c=new"}));
}

TEST(ReplaceFiles, LinksStayLinks) {
    const scratch_directory scratch;
    const std::filesystem::path folder = scratch.path();
    scratch.put("real/a", "old");
    std::filesystem::create_symlink("second", folder / "first");
    std::filesystem::create_symlink("real/a", folder / "second");
    std::filesystem::create_symlink("real/b", folder / "nothing-yet");
    file_replacement files({(folder / "first").string(), (folder / "nothing-yet").string()});
    EXPECT_TRUE(files.check_targets());
    write_new(files, 2);
    EXPECT_TRUE(files.replace());
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "first"));
    EXPECT_EQ(read_file(folder / "real/a") + read_file(folder / "real/b"), "newnew");
    EXPECT_EQ(read_file(folder / "nothing-yet"), "new");
}

TEST(ReplaceFilesDeathTest, ExitRemovesWhatIsThere) {
    const scratch_directory scratch;
    const std::string a = scratch.put("a", "old");
    const auto exit_before_the_end = [&a] {
        file_replacement files({a});
        write_new(files, 1);
        std::exit(3);
    };
    EXPECT_EXIT(exit_before_the_end(), testing::ExitedWithCode(3), "");
    EXPECT_EQ(files_in(scratch), std::set<std::string>({"a=old"}));
}
