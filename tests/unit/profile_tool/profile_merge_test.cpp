// Adding up profiles: against plain addition, in any order and any tree of merges, byte by byte.
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

/// A function of the made-up program: what its record holds whatever has run.
struct plain_function {
    std::string file, name;
    std::size_t blocks, second, third;
    bool placed; ///< it has line information
};

/// A profile of the program: the counts of those functions that ran, as places in the program.
struct plain_profile {
    std::uint64_t runs = 0;
    std::map<std::size_t, std::vector<std::uint64_t>> counts;
};

/// A scratch directory with what the tests do in it.
class merging : public testing::Test {
  protected:
    void merge(const std::string& arguments) {
        const program_result result = run("vexcov-profile merge " + arguments);
        EXPECT_EQ(result.standard_error, "");
        EXPECT_EQ(result.status, 0);
    }
    program_result run(const std::string& command) const {
        return run_command(command, scratch_.path(), "/bin");
    }
    std::string bytes(const std::string& name) const { return read_file(scratch_.path() / name); }
    void put(const std::string& name, const std::string& text) {
        scratch_.put(name, compile_profile_text(text));
    }
    /// Sets the time of the last change, in seconds from a fixed one.
    void set_age(const std::string& name, int seconds) {
        fs::last_write_time(scratch_.path() / name, start_ + std::chrono::seconds(seconds));
    }

    scratch_directory scratch_;
    fs::file_time_type start_ = fs::file_time_type::clock::now() - std::chrono::hours(1);
};

} // namespace

/// Functions in the order of their keys. Names that differ around the apostrophe of the key are among them.
static std::vector<plain_function> random_program(std::mt19937& random) {
    std::map<std::string, plain_function> functions;
    const std::vector<std::string> files = {"a", "a.c", "a.c'", "b/c.c", "Z.c"};
    for (int i = 0; i < 12; ++i) {
        const plain_function function = {files[random() % files.size()],
                                         "f" + std::to_string(random() % 20),
                                         random() % 5,
                                         random() % 3,
                                         random() % 2,
                                         random() % 3 != 0};
        functions.emplace(function.file + "'" + function.name + "'", function);
    }
    std::vector<plain_function> sorted;
    for (const auto& [key, function] : functions)
        sorted.push_back(function);
    return sorted;
}

static plain_profile random_profile(const std::vector<plain_function>& program, bool wide,
                                    std::mt19937& random) {
    plain_profile profile = {random() % 4 == 0 ? 0xFFFFFFF0U : random() % 3, {}};
    for (std::size_t i = 0; i < program.size(); ++i) {
        if (random() % 3 == 0)
            continue;
        std::vector<std::uint64_t>& counts = profile.counts[i];
        counts.resize(program[i].blocks + program[i].second + program[i].third);
        for (std::uint64_t& count : counts)
            count = wide && random() % 8 == 0 ? ~std::uint64_t{0} - random() % 3 : random() % 1000;
    }
    return profile;
}

/// Adds a profile without looking at anything but numbers.
static void add(const plain_profile& profile, plain_profile* sum) {
    sum->runs = std::min<std::uint64_t>(sum->runs + profile.runs, 0xFFFFFFFF);
    for (const auto& [function, counts] : profile.counts) {
        std::vector<std::uint64_t>& total = sum->counts[function];
        total.resize(counts.size());
        for (std::size_t i = 0; i < counts.size(); ++i)
            total[i] = counts[i] > ~total[i] ? ~std::uint64_t{0} : total[i] + counts[i];
    }
}

/// The text of a profile. `shared`: with its names as the program writes them.
static std::string text_of(const plain_profile& profile, const std::vector<plain_function>& program,
                           bool wide, bool shared) {
    std::string text = "header runs " + std::to_string(profile.runs) + "\n";
    std::set<std::string> named;
    for (const auto& [i, counts] : profile.counts)
        if (shared && named.insert(program[i].file).second)
            text += "source " + program[i].file + "\n";
    for (const auto& [i, counts] : profile.counts) {
        const plain_function& function = program[i];
        text += std::string(wide ? "record 64" : "record 32") + "\nfile " + function.file + "\nfunction " +
                function.name + "\nentry" + (counts.empty() ? "" : " 0") + "\n";
        for (std::size_t c = 0; c < counts.size(); ++c) {
            const std::string count = std::to_string(counts[c]);
            if (c >= function.blocks)
                text += (c < function.blocks + function.second ? "group2 " : "group3 ") + count + "\n";
            else
                text += "blocks " + (function.placed ? std::to_string(c + 3) + ":1=" : "") + count + "\n";
        }
    }
    return text;
}

/// Merges the profiles in a random tree into m.dpi: two or more of them become one, until one is left.
static std::vector<std::string> random_tree(std::vector<std::string> names, std::mt19937& random) {
    std::vector<std::string> steps;
    for (int step = 0; names.size() > 1; ++step) {
        std::shuffle(names.begin(), names.end(), random);
        const std::size_t count = std::min<std::size_t>(names.size(), 2 + random() % 4);
        const std::string result = "step" + std::to_string(step) + ".dpi";
        std::string command = "-o " + result;
        for (;
             names.size() > 0 && std::count(command.begin(), command.end(), ' ') <= static_cast<long>(count);
             names.pop_back())
            command += " " + names.back();
        steps.push_back(command);
        names.push_back(result);
    }
    return steps;
}

TEST_F(merging, EqualsPlainAdditionInAnyOrderAndTree) {
    std::mt19937 random(1);
    for (const int profiles : {2, 5, 16, 17, 40, 300}) {
        const bool wide = profiles != 5 && profiles != 40;
        const std::vector<plain_function> program = random_program(random);
        plain_profile sum;
        std::vector<std::string> names;
        for (int i = 0; i < profiles; ++i) {
            const plain_profile profile = random_profile(program, wide, random);
            add(profile, &sum);
            names.push_back(std::to_string(i) + ".dpi");
            put(names.back(), text_of(profile, program, wide, false));
        }
        const std::string expected = compile_profile_text(text_of(sum, program, wide, true));
        std::shuffle(names.begin(), names.end(), random);
        std::string all = "-o all";
        for (const std::string& name : names)
            all += " " + name;
        merge(all);
        EXPECT_EQ(bytes("all.dpi"), expected) << profiles;
        if (profiles > 40)
            continue;
        const std::vector<std::string> steps = random_tree(names, random);
        for (const std::string& step : steps)
            merge(step);
        EXPECT_EQ(bytes("step" + std::to_string(steps.size() - 1) + ".dpi"), expected) << profiles;
    }
}

TEST_F(merging, MemoryOfWordsAndAreas) {
    // What only the instrumentation knows stays where it is the same everywhere; 0 and an empty text else.
    const auto text = [](const std::string& head, const std::string& word, const std::string& flags,
                         const std::string& table, const std::string& area, const std::string& count) {
        return "header runs 1 " + head + "\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=" + count +
               "\ngroup2 1\ngroup3 2 4\nentry 0 1\nroutine f\nroutine g\nflags " + flags + "\nword " + word +
               "\naddress 77\n" + table + "set u32 r0+4 5\nset u32 r0+112 " + area + "\nset u32 r0+208 9\n";
    };
    put("a.dpi", text("word 7 text one", "3", "2", "vtable 9 t\n", "1", "5"));
    put("b.dpi", text("word 7 text two", "4", "2", "vtable 9 t\n", "2", "6"));
    put("c.dpi", text("word 7 text two", "4", "2", "vtable 8\n", "2", "7"));
    merge("-o ab a.dpi b.dpi");
    const std::string shown = run("vexcov-profile show ab.dpi").standard_output;
    EXPECT_EQ(shown,
              "header runs 2 word 7\nsource a.c\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=11\ngroup2 2\n"
              "group3 4 8\nentry 0 1\nroutine f\nroutine g\nflags 2\naddress 77\nvtable 9 t\n"
              "set u32 r0+4 5\nset u32 r0+208 9\n");
    EXPECT_EQ(compile_profile_text(shown), bytes("ab.dpi"));
    merge("-o abc c.dpi ab.dpi");
    merge("-o bc b.dpi c.dpi");
    merge("-o cba bc.dpi a.dpi");
    EXPECT_EQ(bytes("abc.dpi"), bytes("cba.dpi"));
    EXPECT_NE(run("vexcov-profile show abc.dpi").standard_output.find("address 77\nset"), std::string::npos);
}

TEST_F(merging, Widths) {
    const auto text = [](const std::string& width, const std::string& count) {
        return "header runs 1\nrecord " + width + "\nfile a.c\nfunction f\nblocks 3:1=" + count + "\n";
    };
    const auto merged = [&](const std::string& width_a, const std::string& a, const std::string& width_b,
                            const std::string& b) {
        put("a.dpi", text(width_a, a));
        put("b.dpi", text(width_b, b));
        merge("-o m a.dpi b.dpi");
        const std::string shown = run("vexcov-profile show m.dpi").standard_output;
        const std::size_t record = shown.find("record ");
        return shown.substr(record + 7, 2) + shown.substr(shown.find('='));
    };
    EXPECT_EQ(merged("32", "16777215", "32", "1"), "32=16777216\n");
    EXPECT_EQ(merged("32", "16777216", "32", "1"), "64=16777217\n") << "single precision does not hold it";
    EXPECT_EQ(merged("64", "16777216", "32", "1"), "64=16777217\n");
    EXPECT_EQ(merged("32", "1e30", "32", "1"), "64=18446744073709551615\n");
    // The shortest record that there is can be read again, though its readers take more than it has.
    for (const char* name : {"a.dpi", "b.dpi"})
        put(name,
            "header runs 1\nrecord 32\nfile abcdefgh\nfunction f\nrecord 32\nfile abcdefgh\nfunction g\n");
    merge("-o m a.dpi b.dpi");
    EXPECT_EQ(run("vexcov -dpi m.dpi -txtfcvrg f.txt").status, 0);
}

TEST_F(merging, OneProfileStaysAsItIs) {
    const std::string odd = "header runs 1\norder any\nrecord 32\nfile b.c\nfunction f\nblocks 3:1=0.25\n"
                            "record 32\nfile a.c\nfunction f\nblocks 3:1=nan\n";
    put("a.dpi", odd);
    scratch_.put("a.spi", "b.c - f 3 1 x\nV1 4096 4096 4096\na.c - f 3 1 x trailing\n");
    merge("-o m a.dpi");
    EXPECT_EQ(bytes("m.dpi"), bytes("a.dpi"));
    EXPECT_EQ(bytes("m.spi"), bytes("a.spi"));
}

TEST_F(merging, NewestCountsWhereRecordsDoNotAgree) {
    const auto text = [](const std::string& blocks) {
        return "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks " + blocks + "\n";
    };
    put("a.dpi", text("3:1=1"));
    put("b.dpi", text("3:1=10 4:1=10"));
    put("c.dpi", text("3:1=100"));
    put("d.dpi", text("5:1=1000"));
    scratch_.put("a.spi", "a.c - f 3 1 x\na.c - g 9 1 x\n");
    scratch_.put("b.spi", "a.c - f 3 2 x\n");
    scratch_.put("c.spi", "a.c - f 3 1 x\na.c - h 9 1 x\n");
    set_age("a.dpi", 1);
    set_age("b.dpi", 2);
    set_age("c.dpi", 3);
    set_age("d.dpi", 0);
    for (const char* order :
         {"a.dpi b.dpi c.dpi d.dpi", "d.dpi c.dpi b.dpi a.dpi", "c.dpi a.dpi d.dpi b.dpi"}) {
        run("vexcov-profile merge -o m -newest " + std::string(order));
        EXPECT_NE(run("vexcov-profile show m.dpi").standard_output.find("runs 4\n"), std::string::npos);
        EXPECT_NE(run("vexcov-profile show m.dpi").standard_output.find("blocks 3:1=101\n"),
                  std::string::npos);
        EXPECT_EQ(bytes("m.spi"), "a.c - f 3 1 x\na.c - g 9 1 x\na.c - h 9 1 x\n");
        EXPECT_EQ(fs::last_write_time(scratch_.path() / "m.dpi"), start_ + std::chrono::seconds(3))
            << "as old as the newest";
    }
    // A date that nanoseconds cannot count is still the newest.
    run("touch -d 2400-01-01T00:00:00 d.dpi");
    merge("-newest -spi a.spi -o m c.dpi d.dpi a.dpi");
    struct stat merged;
    ASSERT_EQ(stat((scratch_.path() / "m.dpi").c_str(), &merged), 0);
    EXPECT_GT(merged.st_mtime, std::time_t{200} * 365 * 86400);
    set_age("d.dpi", 0);
    // Through intermediate profiles, too: the one that is newer is among the last.
    std::string many = "b.dpi";
    for (int i = 0; i < 40; ++i)
        many += " a.dpi";
    merge("-newest -spi a.spi -o m " + many + " c.dpi");
    EXPECT_NE(run("vexcov-profile show m.dpi").standard_output.find("blocks 3:1=140\n"), std::string::npos);
}

TEST_F(merging, NewestTakesTheRoutineOfTheCountsItTakes) {
    const std::string head = "header runs 1\n";
    put("a.dpi", head + "record 64\nfile a.c\nfunction f\nblocks 3:1=1\n");
    put("b.dpi", head + "record 64\nfile a.c\nfunction f\nblocks 3:1=10 4:1=10\n");
    put("c.dpi", head); // has the routine of a, which did not run
    put("d.dpi", head); // likewise, with other bytes
    scratch_.put("a.spi", "a.c - f 3 1 x\n");
    scratch_.put("b.spi", "a.c - f 3 2 x\n");
    scratch_.put("c.spi", "a.c - f 3 1 x\n");
    scratch_.put("d.spi", "a.c - f 3 1 x\na.c - g 9 1 x\n");
    int age = 0;
    for (const char* name : {"a.dpi", "b.dpi", "c.dpi", "d.dpi"})
        set_age(name, ++age);
    for (const char* order :
         {"a.dpi b.dpi c.dpi d.dpi", "a.dpi c.dpi d.dpi b.dpi", "d.dpi a.dpi c.dpi b.dpi"}) {
        merge("-newest -o m " + std::string(order));
        EXPECT_EQ(bytes("m.spi"), "a.c - f 3 2 x\na.c - g 9 1 x\n") << order;
    }
}

TEST_F(merging, LinesExecutedInPart) {
    // Importers mark them by a block with count 0 behind all others: a line is marked in the sum when each
    // run that executed it left out a part. Lines that exceptions alone lead to stand in front of the marks.
    const auto text = [](const std::string& blocks) {
        std::string profile = "header runs 1\nrecord 64\nfile a.c\nfunction f\nentry 0\n";
        std::istringstream words(blocks);
        for (std::string word; words >> word;)
            profile += "blocks " + word + "\n";
        return profile;
    };
    put("partly.dpi", text("3:1=1 4:5=2 5:5=2 6:5=0 7:1=0  4:5=0 5:5=0"));
    put("wholly.dpi", text("3:1=1 4:5=4 5:5=0 6:5=4 7:1=0"));
    put("thrown.dpi", text("3:1=1 4:5=1 5:5=1 6:5=1 7:1=0  6:9=1  5:5=0 6:5=0 6:9=0"));
    const std::string sum = "3:1=3 4:5=7 5:5=3 6:5=5 7:1=0 6:9=1 5:5=0 6:9=0";
    for (const char* order : {"partly.dpi wholly.dpi thrown.dpi", "thrown.dpi wholly.dpi partly.dpi",
                              "wholly.dpi thrown.dpi partly.dpi"}) {
        merge("-o m " + std::string(order));
        EXPECT_EQ(bytes("m.dpi"),
                  compile_profile_text("header runs 3\nsource a.c\n" +
                                       text(sum).substr(std::string("header runs 1\n").size())))
            << order << run("vexcov-profile show m.dpi").standard_output;
    }
    merge("-o pt partly.dpi thrown.dpi");
    merge("-o ptw pt.dpi wholly.dpi");
    EXPECT_EQ(bytes("ptw.dpi"), bytes("m.dpi")) << "in several steps";
    scratch_.put("ptw.spi", "a.c - f 3 5 I\n");
    scratch_.put("a.c", "\n\nf {\n    a;\n    b;\n    c;      }\n}\n");
    set_age("a.c", -1);
    EXPECT_EQ(run("vexcov-profile check ptw.dpi").standard_output, "nothing found\n");
    for (const char* other : {"3:1=1 4:5=2 5:5=2 8:1=0 4:5=0",                // another last line
                              "3:1=1 4:5=2 5:5=2 6:5=0 7:1=0 5:5=0 4:5=0",    // in no order
                              "3:1=1 4:5=2 5:5=2 6:5=0 7:1=0 8:5=0",          // behind the end
                              "3:1=1 4:5=2 5:5=2 6:5=0 7:1=0 4:5=0 4:9=0"}) { // a line behind a mark
        put("other.dpi", text(other));
        EXPECT_EQ(run("vexcov-profile merge -o m wholly.dpi other.dpi").status, 1) << other;
    }
    put("entry.dpi", "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=1 7:1=0 3:1=0\nentry 2\n");
    put("plain.dpi", "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=1 7:1=0\nentry 2\n");
    EXPECT_EQ(run("vexcov-profile merge -o m entry.dpi plain.dpi").status, 1) << "a block that is an entry";
}

TEST_F(merging, IntoOneOfItsInputs) {
    put("a.dpi", "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=1\n");
    put("b.dpi", "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=2\n");
    merge("-o a.dpi a.dpi b.dpi a.dpi");
    EXPECT_NE(run("vexcov-profile show a.dpi").standard_output.find("blocks 3:1=4\n"), std::string::npos);
    EXPECT_EQ(run("vexcov-profile merge -o b b.dpi none.dpi").status, 1);
    // Several at once: none is lost.
    std::string all = "sh -c '";
    for (int i = 0; i < 8; ++i)
        all += "vexcov-profile merge -o a a.dpi b.dpi & ";
    EXPECT_EQ(run(all + "wait'").standard_error, "");
    EXPECT_NE(run("vexcov-profile show a.dpi").standard_output.find("blocks 3:1=20\n"), std::string::npos);
    std::set<std::string> left;
    for (const auto& entry : fs::directory_iterator(scratch_.path()))
        left.insert(entry.path().filename());
    EXPECT_EQ(left, (std::set<std::string>{"a.dpi", "b.dpi"})) << "no temporary file stays";
}

TEST_F(merging, SaysWhatItDoesNotWrite) {
    put("a.dpi", "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks 3:1=1\n");
    scratch_.put("m.spi", "a.c - f 3 1 I\n");
    const program_result result = run("vexcov-profile merge -o m a.dpi a.dpi");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.standard_error.starts_with("vexcov-profile: warning: m.spi stays as it was: none of "
                                                  "the profiles has a static profile beside it; remove it"));
    EXPECT_EQ(run("vexcov-profile merge -o m -o n a.dpi").standard_error,
              "vexcov-profile: error: option -o is given twice; name one profile to write\n");
}

TEST_F(merging, LineOfARoutineIsThatWhereItRan) {
    // Importers that know lines only place a function that never ran elsewhere.
    const std::string record = "header runs 1\nrecord 64\nfile a.c\nfunction ";
    put("f.dpi", record + "f\nblocks 3:1=1\n");
    put("g.dpi", record + "g\nblocks 9:1=1\n");
    put("h.dpi", record + "h\nblocks 9:1=1\n");
    scratch_.put("f.spi", "a.c - f 2 1 I\na.c - g 9 1 I\na.c - h 20 1 I\n");
    scratch_.put("g.spi", "a.c - g 8 1 I\na.c - f 3 1 I\na.c - h 21 1 I\n");
    scratch_.put("h.spi", "a.c - f 3 1 I\na.c - g 9 1 I\na.c - h 19 1 I\n");
    for (const char* order :
         {"f.dpi g.dpi h.dpi", "h.dpi g.dpi f.dpi", "g.dpi h.dpi f.dpi", "h.dpi h.dpi f.dpi g.dpi"}) {
        merge("-o m " + std::string(order));
        EXPECT_EQ(bytes("m.spi"), "a.c - f 2 1 I\na.c - g 8 1 I\na.c - h 19 1 I\n") << order;
    }
    merge("-o fg f.dpi g.dpi");
    merge("-o fgh h.dpi fg.dpi");
    EXPECT_EQ(bytes("fgh.spi"), bytes("m.spi"));
    scratch_.put("g.spi", "a.c - f 3 1 I\na.c - g 8 2 I\n");
    EXPECT_EQ(run("vexcov-profile merge -o m f.dpi g.dpi").status, 1) << "not with other blocks";
}

TEST_F(merging, SumIsAsOldAsItsProfilesForTheCheckOfSources) {
    scratch_.put("a.c", "int f(void) { return 1; }\n");
    put("a.dpi", "header runs 1\nrecord 64\nfile a.c\nfunction f\nblocks 1:1=1\n");
    scratch_.put("a.spi", "a.c - f 1 1 I\n");
    set_age("a.dpi", 0);
    set_age("a.c", -1);
    EXPECT_EQ(run("vexcov-profile check a.dpi").standard_output, "nothing found\n");
    set_age("a.c", 1);
    merge("-o m a.dpi a.dpi");
    const program_result checked = run("vexcov-profile check m.dpi");
    EXPECT_EQ(checked.standard_output, "source files that are newer than the profile: 1\n    a.c\n");
    EXPECT_EQ(checked.status, 2);
}

TEST_F(merging, NamesThatLieInEachOther) {
    // A small profile with 2,000 routines, all of which have one long name: that of the source file.
    std::string text = "header runs 1\nrecord 64\nfile " + std::string(4000, 'a') +
                       "\nfunction f\nblocks 1:1=1\nentry 0 x 2000\n";
    const std::string file_name = std::to_string(528 + 80 + 8 + 12 * 2000 + 8 + 2 * 2000);
    for (int i = 0; i < 2000; ++i)
        text += "set u64 r0+" + std::to_string(88 + 8 * i) + " " + file_name + "\n";
    put("a.dpi", text);
    for (const char* command : {"merge -o m a.dpi a.dpi", "show a.dpi"})
        EXPECT_EQ(run("vexcov-profile " + std::string(command)).standard_error,
                  "vexcov-profile: error: a.dpi has far more names than bytes, as they lie in each other; "
                  "import it again\n");
}
