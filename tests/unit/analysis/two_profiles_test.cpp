// Two pairs of profiles of different kinds analysed in one process, one source file of each in turn, give
// what two runs give.
#include "analysis/source_analysis.h"
#include "common/source_file.h"
#include "coverage/block_marking.h"
#include "coverage/coverage_list.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "markers/parser.h"
#include "profile/dpi_file.h"
#include "profile/module_list.h"
#include "tests/tools/product.h"
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>

namespace {

using dpi_ptr = std::unique_ptr<DPI_FILE, decltype(&PGOPTI_Close_Dpi_File)>;

/// A pair of profiles with a reference, and how it is to be read. The files are NAME.spi, NAME.dpi, NAME.ref.
struct pair_of_profiles {
    std::string name;
    bool differential;
    bool no_partial;
    std::vector<std::string> markers;
};

const pair_of_profiles kPairs[] = {{"narrow", true, false, {}}, {"wide", false, true, {"OFF"}}};

/// All of an analysis that does not depend on where its memory lies.
std::string shown(const source_analysis& analysis) {
    std::ostringstream out;
    const source_figures& f = analysis.figures;
    out << analysis.path << ' ' << analysis.text.size() << " functions " << f.functions << ' '
        << f.functions_found << ' ' << f.functions_new << ' ' << f.functions_with_new << ' '
        << f.functions_covered << " blocks " << f.blocks << ' ' << f.blocks_covered << " status "
        << static_cast<int>(f.status) << '\n';
    for (const source_function& function : analysis.functions)
        out << function.shown_name << ' ' << function.called << function.new_in_reference << ' '
            << function.blocks << ' ' << function.covered << ' ' << function.extra << ' '
            << function.entry_count << ' ' << function.last.line << '\n';
    for (const block_list_node& p : analysis.positions.positions())
        out << p.line << ':' << p.column << '=' << p.count << ' ' << p.numBlocks << ' ' << p.numExecuted
            << ' ' << p.numAdjusted << ' ' << p.bNotInRef
            << (analysis.disabled.contains(p.line) ? " off\n" : "\n");
    return out.str();
}

/// What is open of a pair.
struct open_pair {
    explicit open_pair(const pair_of_profiles& which)
        : pair(which), profile(PGOPTI_Open_Dpi_File((which.name + ".dpi").c_str()), PGOPTI_Close_Dpi_File),
          reference(which.differential ? PGOPTI_Open_Dpi_File((which.name + ".ref").c_str()) : nullptr,
                    PGOPTI_Close_Dpi_File) {
        next = GetComponentList((which.name + ".spi").c_str(), nullptr, nullptr, list);
    }

    /// Analyses the next source file; empty behind the last.
    std::string analyse_next() {
        if (!next)
            return "";
        std::string_view text;
        EXPECT_TRUE(sources.load(next->fileName, &text));
        const parser marks(next->fileName, pair.markers, {}, {}, {}, sources);
        const analysis_inputs inputs = {{profile.get(), "p"},  {reference.get(), "r"},    next, text,
                                        count_lines(text) + 1, marks.all_disabled_lines()};
        std::string result = shown(analyse_file(inputs, {.no_partial = pair.no_partial}, nullptr));
        for (const COMP* first = next; next && same_file(next, first);)
            next = next->next;
        return result;
    }

    const pair_of_profiles& pair;
    dpi_ptr profile;
    dpi_ptr reference;
    module_list list;
    const COMP* next;
    source_loader sources;
};

/// What a run of its own comes to, file by file through the process-wide records.
std::string run_alone(const pair_of_profiles& pair) {
    std::string result;
    run_product([&] {
        open_pair open(pair);
        pgofDPIFile = open.profile.release();
        pgofRefDPIFile = open.reference.release();
        compWithRef = pair.differential;
        g_bNoPartial = pair.no_partial;
        one_line_disable = pair.markers;
        while (open.next) {
            const COMP* first = open.next;
            parser marks(first->fileName, one_line_disable, {}, {}, {}, run_sources());
            pars = &marks;
            markBlocks(first);
            result += shown(g_cl->current_analysis());
            g_cl->vPrepareForNewSrcFile();
            while (open.next && same_file(open.next, first))
                open.next = open.next->next;
        }
    });
    return result;
}

std::string record(const std::string& width, const std::string& file, const std::string& function,
                   const std::string& blocks) {
    return "record " + width + "\nfile " + file + "\nfunction " + function + "\nblocks " + blocks + "\n";
}

TEST(TwoProfiles, AnalysedInTurnGiveWhatTwoRunsGive) {
    const scratch_directory scratch;
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::current_path(scratch.path());
    for (const char* name : {"a.c", "b.c"})
        scratch.put(name, "int f(int a) {\n  if (a) a = 1; // OFF\n  return a;\n}\nint g() {\n}\n");
    for (const char* name : {"narrow.spi", "wide.spi"})
        scratch.put(name, "b.c - f 1 4 I\na.c - g 5 1 I\na.c - f 1 3 I\nb.c - g 5 2 I\n");
    scratch.put("narrow.dpi",
                compile_profile_text("header runs 1\n" + record("32", "a.c", "f", "1:14=3.5 2:10=0 4:1=3") +
                                     record("32", "b.c", "g", "5:9=16777217 6:1=1 6:1=0")));
    scratch.put("narrow.ref",
                compile_profile_text("header runs 9\n" + record("32", "a.c", "f", "1:14=0 2:10=0 4:1=1")));
    scratch.put("wide.dpi",
                compile_profile_text("header runs 2\n" +
                                     record("64", "a.c", "f", "1:14=4294967296 2:10=0 4:1=0 9:9=1") +
                                     record("64", "b.c", "f", "1:14=1 3:3=0 3:3=5 4:1=0")));
    std::string alone[2], in_turn[2];
    open_pair first(kPairs[0]);
    open_pair second(kPairs[1]);
    for (int i = 0; i < 2; ++i) {
        in_turn[0] += first.analyse_next();
        in_turn[1] += second.analyse_next();
        alone[i] = run_alone(kPairs[i]);
    }
    EXPECT_EQ(in_turn[0], alone[0]);
    EXPECT_EQ(in_turn[1], alone[1]);
    EXPECT_NE(alone[0].find("b.c 64 functions 2 1 1 1 1 blocks 7 2 status 2\n"), std::string::npos)
        << alone[0];
    EXPECT_NE(alone[1].find("1:14=4294967296 1 1 0 0\n"), std::string::npos) << alone[1];
    std::filesystem::current_path(home);
}

} // namespace
