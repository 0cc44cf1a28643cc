// Input: a script of small decisions from which a dynamic profile, a reference profile, a static profile,
// sources, a component list and options are built, so that they fit together often enough for every part of
// the program to be reached. The program's own main runs on them. A run that ends well has left whole pages
// whose links all lead somewhere; any other has left a message.
#include "driver/run.h"
#include "fuzz/harness.h"
#include "fuzz/page_check.h"
#include "tests/tools/profile_text.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

using namespace std::string_view_literals;

static constexpr std::string_view file_names = "a.c A_c dir/a.c b.cpp dir/b.c it's.c no_ext <&>.c";

static constexpr std::string_view routine_names =
    "f g main _Z1fv _Z1fi _ZN1a1bEi _ZNK1a1bIcEEv ___sti__x __$Uy at@12 f@3x _ZN1aC1Ev _ZN1aC2Ev _under ? _Z";

/// Between bars.
static constexpr std::string_view source_pieces =
    "// OFF\n|/* OFF */|// BEGIN\n|// END\n|{|}\n|int f() {\n|\n|    |\t|x = 1;|if (a) b; else c;\n|"
    "\"text\"|'|\"|\\|<&>|\r\n|\0|return;\n|/*|*/|//|^ "sv;

/// Options between bars. In the first two lists each has a bit; of the last, with 16, one is taken.
static constexpr std::string_view usual_options =
    "-counts|-nopartial|-ref ref.dpi|-onelinedsbl OFF|-beginblkdsbl BEGIN -endblkdsbl END|"
    "-txtbcvrgfull blocks.txt -xmlbcvrgfull blocks.xml|-nopmeter";
static constexpr std::string_view rare_options =
    "-prj <Project>|-maddr a@b|-xcolor gray|-spi none|-comp none|-txtbcvrgfull none/blocks.txt|-help";
static constexpr std::string_view other_options =
    "-nopmeter|-comp .|-spi .|-dpi none|-ref none|-demang|-mname x -maddr a@b|-pcolor #123456 -ucolor red|"
    "-bcolor blue -ccolor green -fcolor x|-spi|-xmlbcvrgfull|of another tool|-endblkdsbl END|"
    "-onelinedsbl END -beginblkdsbl END -endblkdsbl END|-txtfcvrg none/f.txt|-comp pgopti.dpi";

/// Where a directory may stand in the way of a page, an image or an export.
static constexpr std::string_view blocked_pages =
    "CODE_COVERAGE.HTML CodeCoverage/__TOOLBAR.HTML CodeCoverage/__HELP.HTML CodeCoverage/__Home.gif "
    "CodeCoverage/A_C.HTML CodeCoverage/A_C_SRC.HTML CodeCoverage/A_C_CVRDFNCS_4.HTML "
    "CodeCoverage/A_C_UNCVRDFNCS_0.HTML CodeCoverage/__CODE_COVERAGE.HTML "
    "CodeCoverage/__COVERED_FILES_COVERAGE_2.HTML CodeCoverage/__UNCOVERED_FILES_COVERAGE_6.HTML blocks.xml";

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

static void add_options(scenario& run, std::string_view words) {
    for (const std::string_view word : split(words))
        run.options.emplace_back(word);
}

/// One routine's record in the profile (0) or the reference (1).
static void add_record(scenario& run, std::size_t profile, const std::string& file, const std::string& name,
                       const std::string& body) {
    run.records[profile][file + "'" + name + "'"] = std::string("record ") +
                                                    (run.wide[profile] ? "64" : "32") + "\nfile " + file +
                                                    "\nfunction " + name + "\n" + body;
}

static void add_source(scenario& run, const std::string& name, std::string_view text) {
    scratch().put(name, text);
    run.sources.insert(name);
}

static void read_options(byte_script& script, scenario& run) {
    unsigned int kind = script.byte();
    run.wide[0] = run.wide[1] = (kind & 128) != 0;
    for (const std::string_view words : split(usual_options, '|')) {
        if ((kind & 1) != 0)
            add_options(run, words);
        kind >>= 1;
    }
    const unsigned int rare = script.byte();
    if (rare >= 32 && rare < 48)
        add_options(run, split(other_options, '|')[rare - 32]);
    if (rare < 32) {
        for (const std::string_view words : split(rare_options, '|'))
            if (script.flag())
                add_options(run, words);
        const std::vector<std::string_view> pages = split(blocked_pages);
        const unsigned int page = script.below(24);
        if (page < pages.size())
            fs::create_directories(scratch().path() / std::string(pages[page]));
        run.html = !script.flag();
        if (!run.html)
            add_options(run, "-txtfcvrg f.txt -xmlfcvrg f.xml");
        if (script.flag())
            run.wide[1] = !run.wide[1];
    }
    const unsigned int list = script.byte();
    if (list < 64) {
        add_options(run, "-comp list");
        for (unsigned int i = 0; i < list % 4; ++i)
            run.component_list +=
                script.one_of("dir/\n|~b\n|\n|ONE_LINE_NOTFEASIBLE: \"OFF\"\n|BEGIN_NOTFEASIBLE: \"BEGIN\"\n|"
                              "END_NOTFEASIBLE: \"END\"\n|a|~dir\r\n",
                              '|');
    }
    for (unsigned int& runs : run.runs)
        runs = (script.byte() + 1) % 256;
}

static std::string read_source(byte_script& script) {
    std::string text;
    const std::vector<std::string_view> choices = split(source_pieces, '|');
    const unsigned int pieces = script.below(64);
    for (unsigned int i = 0; i < pieces; ++i) {
        const unsigned int piece = script.byte();
        text += piece < 250 ? choices[piece % choices.size()] : " \n \n \n \n \n \n";
    }
    return text;
}

static std::string read_count(byte_script& script, bool wide) {
    const unsigned int byte = script.byte();
    if (byte < 240)
        return std::to_string(byte % 5 == 0 ? 0 : byte);
    const std::vector<std::string_view> limits =
        split(wide ? "18446744073709551615 9223372036854775808 4294967296 16777217"
                   : "nan inf -1 0.5 1e30 -inf 16777216 1.5");
    return std::string(limits[byte % limits.size()]);
}

/// One routine: its line of the static profile and its records.
static void read_routine(byte_script& script, scenario& run, const std::string& file) {
    const std::string name(script.one_of(routine_names));
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
    for (std::size_t profile = 0; profile < 2; ++profile)
        if ((where >> (2 + profile) & 1) == 0)
            add_record(run, profile, file, name, body[profile]);
}

/// Enough routines of one file, or files of one routine, for the lists to be sorted in the way of long ones.
static void add_many(byte_script& script, scenario& run, bool files) {
    const unsigned int step = script.byte();
    for (unsigned int i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i * step % 41);
        const std::string file =
            files ? "many/" + number + "/f" + std::to_string(i * step % 7) + ".c" : "a.c";
        add_source(run, file, "x\n");
        const std::string blocks = std::to_string(i * step % 5 + 1);
        run.static_profile += file + " - r" + number + " 1 " + blocks + " I\n";
        if (i * step % 3 != 0)
            add_record(run, 0, file, "r" + number, "blocks 1:1=" + std::to_string(i * step % 2) + "\n");
    }
}

/// Routines of one display name on two lines, some of them executed.
static void add_twins(byte_script& script, scenario& run) {
    add_source(run, "a.c", "x\ny\n");
    for (char letter = 'a'; letter < 'e'; ++letter) {
        const unsigned int executed = script.byte();
        const unsigned int on_line_2 = script.byte();
        for (unsigned int i = 0; i < 5; ++i) {
            const std::string name = std::string("_ZN1") + letter + "C" + std::to_string(i + 1) + "Ev";
            const std::string line = (on_line_2 >> i & 1) != 0 ? "2" : "1";
            run.static_profile += "a.c - " + name + " " + line + " 1 I\n";
            if ((executed >> i & 1) != 0)
                add_record(run, 0, "a.c", name, "blocks " + line + ":1=1\n");
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
        const std::string name(script.one_of(file_names));
        if (script.below(16) != 15 || run.sources.count(name) != 0)
            add_source(run, name, read_source(script));
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
    for (std::size_t profile = 0; profile < 2; ++profile) {
        std::string text = "header runs " + std::to_string(run.runs[profile]) + "\n";
        for (const auto& [key, record] : run.records[profile])
            text += record;
        std::string bytes = compile_profile_text(text);
        damage(script, bytes);
        scratch().put(profile == 0 ? "pgopti.dpi" : "ref.dpi", bytes);
    }
    std::string static_profile = run.static_profile;
    damage(script, static_profile);
    scratch().put("pgopti.spi", static_profile);
    scratch().put("list", run.component_list);
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
    for (const fs::directory_entry& entry : fs::directory_iterator(scratch().path() / "CodeCoverage"))
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
    const outcome end = run_in_scratch([&] { call_main(run_report, run.options); });
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
