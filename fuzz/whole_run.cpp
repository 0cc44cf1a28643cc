// Input: a script of small decisions from which a dynamic profile, a reference profile, a static profile,
// sources, a component list and options are built, so that they fit together often enough for every part of
// the program to be reached. The program's own main runs on them. A run that ends well has left whole pages
// whose links all lead somewhere; any other has left a message.
#include "fuzz/harness.h"
#include "fuzz/page_check.h"
#include "tests/tools/profile_text.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

// The program's main goes by another name here.
int vexcov_main(int argc, char** argv);
#define main vexcov_main
#include "driver/main.cpp"
#undef main

namespace fs = std::filesystem;

static const char* const file_names[] = {"a.c",     "A_c",    "dir/a.c", "b.cpp",
                                         "dir/b.c", "it's.c", "no_ext",  "<&>.c"};

static const char* const routine_names[] = {
    "f",         "g",     "main",  "_Z1fv", "_Z1fi",     "_ZN1a1bEi", "_ZNK1a1bIcEEv",
    "___sti__x", "__$Uy", "at@12", "f@3x",  "_ZN1aC1Ev", "_ZN1aC2Ev", "_under",
    "?",         "_Z"};

static const std::string_view source_pieces[] = {"// OFF\n",
                                                 "/* OFF */",
                                                 "// BEGIN\n",
                                                 "// END\n",
                                                 "{",
                                                 "}\n",
                                                 "int f() {\n",
                                                 "\n",
                                                 "    ",
                                                 "\t",
                                                 "x = 1;",
                                                 "if (a) b; else c;\n",
                                                 "\"text\"",
                                                 "'",
                                                 "\"",
                                                 "\\",
                                                 "<&>",
                                                 "\r\n",
                                                 std::string_view("\0", 1),
                                                 "return;\n",
                                                 "/*",
                                                 "*/",
                                                 "//",
                                                 "^ "};

namespace {

/// Everything that a script describes.
struct scenario {
    std::vector<std::string> options = {"vexcov"};
    std::set<std::string> sources;                 ///< names of the files that exist
    std::map<std::string, std::string> records[2]; ///< key -> record, of the profile and the reference
    std::string static_profile;
    std::string component_list;
    bool wide[2] = {false, false};
    unsigned int runs[2] = {1, 1};
    bool html = true;
};

} // namespace

/// Adds an option with its value when the script says so.
static void maybe(byte_script& script, scenario& run, const char* option, const char* value) {
    if (!script.flag())
        return;
    run.options.push_back(option);
    if (value)
        run.options.push_back(value);
}

/// Puts a directory where a page, an image or an export would be written.
static void block_page(byte_script& script) {
    static const char* const names[] = {"CODE_COVERAGE.HTML",
                                        "CodeCoverage/__TOOLBAR.HTML",
                                        "CodeCoverage/__HELP.HTML",
                                        "CodeCoverage/__Home.gif",
                                        "CodeCoverage/A_C.HTML",
                                        "CodeCoverage/A_C_SRC.HTML",
                                        "CodeCoverage/A_C_CVRDFNCS_4.HTML",
                                        "CodeCoverage/A_C_UNCVRDFNCS_0.HTML",
                                        "CodeCoverage/__CODE_COVERAGE.HTML",
                                        "CodeCoverage/__COVERED_FILES_COVERAGE_2.HTML",
                                        "CodeCoverage/__UNCOVERED_FILES_COVERAGE_6.HTML",
                                        "blocks.xml"};
    const unsigned int page = script.below(2 * std::size(names));
    if (page < std::size(names))
        fs::create_directories(scratch_directory() + names[page]);
}

static void read_options(byte_script& script, scenario& run) {
    const unsigned int kind = script.byte();
    if (kind & 1)
        run.options.push_back("-counts");
    if (kind & 2)
        run.options.push_back("-nopartial");
    if (kind & 4)
        run.options.insert(run.options.end(), {"-ref", "ref.dpi"});
    if (kind & 8)
        run.options.insert(run.options.end(), {"-onelinedsbl", "OFF"});
    if (kind & 16)
        run.options.insert(run.options.end(), {"-beginblkdsbl", "BEGIN", "-endblkdsbl", "END"});
    if (kind & 32)
        run.options.insert(run.options.end(), {"-txtbcvrgfull", "blocks.txt", "-xmlbcvrgfull", "blocks.xml"});
    if (kind & 64)
        run.options.push_back("-nopmeter");
    run.wide[0] = run.wide[1] = (kind & 128) != 0;
    if (script.byte() < 32) {
        maybe(script, run, "-prj", "<Project>");
        maybe(script, run, "-maddr", "a@b");
        maybe(script, run, "-xcolor", "gray");
        maybe(script, run, "-spi", "none.spi");
        maybe(script, run, "-comp", "none");
        maybe(script, run, "-txtbcvrgfull", "none/blocks.txt");
        maybe(script, run, "-help", nullptr);
        block_page(script);
        run.html = !script.flag();
        if (!run.html)
            run.options.insert(run.options.end(), {"-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml"});
        if (script.flag())
            run.wide[1] = !run.wide[1];
    }
    const unsigned int list = script.byte();
    if (list < 64) {
        run.options.insert(run.options.end(), {"-comp", "list"});
        static const char* const lines[] = {"dir/\n",
                                            "~b\n",
                                            "\n",
                                            "ONE_LINE_NOTFEASIBLE: \"OFF\"\n",
                                            "BEGIN_NOTFEASIBLE: \"BEGIN\"\n",
                                            "END_NOTFEASIBLE: \"END\"\n",
                                            "a",
                                            "~dir\r\n"};
        for (unsigned int i = 0; i < list % 4; ++i)
            run.component_list += lines[script.below(8)];
    }
    for (unsigned int& runs : run.runs)
        runs = (script.byte() + 1) % 256;
}

static std::string read_source(byte_script& script) {
    std::string text;
    const unsigned int pieces = script.below(64);
    for (unsigned int i = 0; i < pieces; ++i) {
        const unsigned int piece = script.byte();
        text += piece < 250 ? source_pieces[piece % std::size(source_pieces)]
                            : std::string_view(" \n \n \n \n \n \n", 12);
    }
    return text;
}

static std::string read_count(byte_script& script, bool wide) {
    static const char* const wide_counts[] = {"18446744073709551615", "9223372036854775808", "4294967296",
                                              "16777217"};
    static const char* const narrow_counts[] = {"nan", "inf", "-1", "0.5", "1e30", "-inf", "16777216", "1.5"};
    const unsigned int byte = script.byte();
    if (byte < 240)
        return std::to_string(byte % 5 == 0 ? 0 : byte);
    return wide ? wide_counts[byte % 4] : narrow_counts[byte % 8];
}

/// One routine: its line of the static profile and its records.
static void read_routine(byte_script& script, scenario& run, const std::string& file) {
    const std::string name = routine_names[script.below(std::size(routine_names))];
    const unsigned int where = script.byte();
    const std::int32_t line = static_cast<std::int32_t>(script.number());
    const unsigned int blocks = script.below(10);
    const std::uint32_t static_blocks = (where & 32) != 0 ? script.number() : blocks;
    if ((where & 3) != 3)
        run.static_profile += file + " - " + name + " " + std::to_string(line) + " " +
                              std::to_string(static_cast<std::int32_t>(static_blocks)) + " I\n";
    const bool lines = (where & 80) != 80;
    std::string body[2];
    for (unsigned int i = 0; i < blocks; ++i) {
        const std::string position =
            std::to_string(script.number()) + ":" + std::to_string(script.number()) + "=";
        for (std::size_t profile = 0; profile < 2; ++profile)
            body[profile] +=
                "blocks " + (lines ? position : std::string()) + read_count(script, run.wide[profile]) + "\n";
    }
    if (blocks > 0 && (where & 128) != 0)
        body[0] += "entry 0 " + std::to_string(script.below(blocks)) + "\n";
    const std::string key = file + "'" + name + "'";
    for (std::size_t profile = 0; profile < 2; ++profile)
        if ((where >> (2 + profile) & 1) == 0)
            run.records[profile][key] = std::string("record ") + (run.wide[profile] ? "64" : "32") +
                                        "\nfile " + file + "\nfunction " + name + "\n" + body[profile];
}

/// Enough routines of one file, or files of one routine, for the lists to be sorted in the way of long ones.
static void add_many(byte_script& script, scenario& run, bool files) {
    const unsigned int step = script.byte();
    for (unsigned int i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i * step % 41);
        const std::string file =
            files ? "many/" + number + "/f" + std::to_string(i * step % 7) + ".c" : "a.c";
        write_scratch(file, "x\n");
        run.sources.insert(file);
        const std::string blocks = std::to_string(i * step % 5 + 1);
        run.static_profile += file + " - r" + number + " 1 " + blocks + " I\n";
        if (i * step % 3 != 0)
            run.records[0][file + "'r" + number + "'"] =
                std::string("record ") + (run.wide[0] ? "64" : "32") + "\nfile " + file + "\nfunction r" +
                number + "\nblocks 1:1=" + std::to_string(i * step % 2) + "\n";
    }
}

/// Routines of one display name on one line, some of them executed.
static void add_twins(byte_script& script, scenario& run) {
    write_scratch("a.c", "x\ny\n");
    run.sources.insert("a.c");
    for (char letter = 'a'; letter < 'e'; ++letter) {
        const unsigned int executed = script.byte();
        for (char variant = '1'; variant < '4'; ++variant) {
            const std::string name = std::string("_ZN1") + letter + "C" + variant + "Ev";
            run.static_profile += "a.c - " + name + " 1 1 I\n";
            if ((executed >> (variant - '1') & 1) != 0)
                run.records[0]["a.c'" + name + "'"] = std::string("record ") + (run.wide[0] ? "64" : "32") +
                                                      "\nfile a.c\nfunction " + name + "\nblocks 1:1=1\n";
        }
    }
}

static void read_files(byte_script& script, scenario& run) {
    const unsigned int kind = script.byte();
    if (kind == 250 || kind == 251)
        add_twins(script, run);
    if (kind >= 252)
        add_many(script, run, kind >= 254);
    const unsigned int files = kind % 5 + 1;
    for (unsigned int i = 0; i < files; ++i) {
        const std::string name = file_names[script.below(std::size(file_names))];
        if (script.below(16) != 15 || run.sources.count(name) != 0) {
            write_scratch(name, read_source(script));
            run.sources.insert(name);
        }
        const unsigned int routines = script.below(8);
        for (unsigned int j = 0; j < routines; ++j)
            read_routine(script, run, name);
    }
}

/// Changes some bytes of a file.
static void damage(byte_script& script, std::string& bytes) {
    const unsigned int kind = script.byte();
    if (kind < 192 || bytes.empty())
        return;
    for (unsigned int i = 0; i < kind % 4 + 1; ++i)
        bytes[script.number() % bytes.size()] ^= static_cast<char>(script.byte());
    if (kind >= 240)
        bytes.resize(script.number() % bytes.size());
}

static void write_files(byte_script& script, const scenario& run) {
    static const char* const names[] = {"pgopti.dpi", "ref.dpi"};
    for (std::size_t profile = 0; profile < 2; ++profile) {
        std::string text = "header runs " + std::to_string(run.runs[profile]) + "\n";
        for (const auto& [key, record] : run.records[profile])
            text += record;
        std::string bytes = compile_profile_text(text);
        damage(script, bytes);
        write_scratch(names[profile], bytes);
    }
    std::string static_profile = run.static_profile;
    damage(script, static_profile);
    write_scratch("pgopti.spi", static_profile);
    write_scratch("list", run.component_list);
}

/// Checks the pages of a run that ended well. Returns all output.
static std::string check_report(const scenario& run) {
    std::string all;
    for (const char* name : {"blocks.txt", "blocks.xml", "f.txt", "f.xml"})
        all += read_scratch(name);
    if (!run.html)
        return all;
    all += read_scratch("CODE_COVERAGE.HTML");
    check_page(read_scratch("CODE_COVERAGE.HTML"), "");
    std::set<std::string> pages;
    for (const fs::directory_entry& entry : fs::directory_iterator(scratch_directory() + "CodeCoverage"))
        if (entry.is_regular_file())
            pages.insert(entry.path().filename().string());
    for (const std::string& name : pages) {
        const std::string page = read_scratch("CodeCoverage/" + name);
        all += name + "\n" + page;
        // The listing of an empty source ends behind its head.
        if (name.ends_with(".HTML") && !(name.ends_with("_SRC.HTML") && page.ends_with("<pre>\n")))
            check_page(page, "CodeCoverage/");
    }
    return all;
}

/// Builds and runs the scenario; everything that came of it as one text.
static std::string run_once(const std::uint8_t* data, std::size_t size) {
    clear_scratch();
    byte_script script(data, size);
    scenario run;
    read_options(script, run);
    read_files(script, run);
    write_files(script, run);
    std::vector<char*> argv;
    for (std::string& option : run.options)
        argv.push_back(option.data());
    argv.push_back(nullptr);
    const outcome end = run_product([&] { vexcov_main(static_cast<int>(argv.size()) - 1, argv.data()); });
    require(end.ended, "the program ends through its one exit");
    require(end.status != 0 || end.errors.find("ERROR") == std::string::npos,
            "exit status 0 comes without an error");
    std::string all = std::to_string(end.status) + end.output + end.errors;
    if (end.status == 0)
        all += check_report(run);
    require(all.size() < std::size_t{1} << 22, "the size of the output is bounded");
    return all;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string result = run_once(data, size);
    // Some inputs run twice: nothing of a run may be left behind for the next one.
    if (size % 16 == 5)
        require(run_once(data, size) == result, "a second run gives the same result");
    return 0;
}
