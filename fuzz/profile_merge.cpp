// Input: decisions on a program, several profiles of it with damages, and the order and tree in which they
// are merged. What comes out is compared with plain addition over the decisions, which shares no code with
// the merge: its writer is that of the tests.
#include "common/fatal.h"
#include "fuzz/harness.h"
#include "profile_tool/tool_run.h"
#include "tests/tools/profile_text.h"

#include <algorithm>
#include <map>

namespace {

/// A function with one shape. Sums are those of all profiles.
struct function_sum {
    std::vector<std::uint64_t> counts;
    std::size_t seen = 0; ///< profiles that have it
    std::uint32_t word = 0;
    bool same_word = true;
};

/// What all profiles come to.
struct expected_sum {
    std::uint64_t runs = 0;
    bool wide = false;                             ///< a profile has 64-bit records
    bool disagree = false;                         ///< two records of one function have different shapes
    bool whole = true;                             ///< no counter has a fraction
    std::map<std::string, std::string> shapes;     ///< text of each record up to its counts, by key
    std::map<std::string, function_sum> functions; ///< by key
};

} // namespace

constexpr std::uint64_t kExactSingle = 1 << 24;

static std::string count_text(byte_script& script, bool wide, std::uint64_t* count, bool* whole) {
    if (wide && script.below(16) == 15) {
        *count = ~std::uint64_t{0} - script.below(3);
    } else if (!wide && script.below(16) == 15) {
        const std::string odd(script.one_of("0.5 -1 nan inf 16777216 4294967296"));
        *whole = *whole && odd.size() != 2 && odd != "0.5" && odd != "nan";
        *count = odd == "inf" ? ~std::uint64_t{0} : odd.size() > 3 ? std::stoull(odd) : 0;
        return odd;
    } else {
        *count = script.byte();
    }
    return std::to_string(*count);
}

/// Decides on one record and adds it to the sum. Returns its text.
static std::string record_text(byte_script& script, bool wide, const std::string& file,
                               const std::string& name, expected_sum* sum) {
    // Mostly what the function has elsewhere.
    const std::size_t own = script.below(32);
    const std::size_t length = file.size() + name.size();
    const std::size_t blocks = own == 31 ? script.below(4) : length % 4;
    const std::size_t second = own == 30 ? 1 : length / 4 % 2;
    const bool placed = own != 29 && length % 4 != 2;
    const std::string column = own == 28 ? ":2=" : ":1=";
    std::string shape = "entry" + std::string(blocks != 0 ? " 0" : "") + "\n" + (placed ? column : "-") +
                        std::to_string(blocks) + "+" + std::to_string(second);
    if (blocks == 0)
        shape = "entry\n0+" + std::to_string(second);
    const std::string key = file + "'" + name + "'";
    const std::string known = sum->shapes.try_emplace(key, shape).first->second;
    sum->disagree = sum->disagree || known != shape;
    function_sum& total = sum->functions[key];
    total.counts.resize(std::max(total.counts.size(), blocks + second));
    const std::uint32_t word = script.below(3);
    total.same_word = total.same_word && (total.seen == 0 || total.word == word);
    total.word = word;
    ++total.seen;
    std::string text = std::string(wide ? "record 64" : "record 32") + "\nfile " + file + "\nfunction " +
                       name + "\nword " + std::to_string(word) + "\n" + shape.substr(0, shape.find('\n') + 1);
    for (std::size_t i = 0; i < blocks + second; ++i) {
        std::uint64_t count = 0;
        const std::string written = count_text(script, wide, &count, &sum->whole);
        total.counts[i] = count > ~total.counts[i] ? ~std::uint64_t{0} : total.counts[i] + count;
        text += i >= blocks ? "group2 " : placed ? "blocks " + std::to_string(i + 3) + column : "blocks ";
        text += written + "\n";
    }
    return text;
}

/// Files and functions in the order of their keys. Long enough that a record without anything can be read as
/// the last one: readers take 80 bytes of each.
static const std::vector<std::pair<std::string, std::string>>& names() {
    static const std::vector<std::pair<std::string, std::string>> all = {
        {"a'b", "c_in_a_file_with_an_apostrophe"},
        {"a'b", "d'e_with_another_apostrophe"},
        {"a.c", "f_of_some_length_here"},
        {"a.c", "g_of_some_length_here"},
        {"a.c/of/some/folder", ""},
        {"path/of/b.c", "_ZN5queue4pushEi"}};
    return all;
}

static std::string profile_text(byte_script& script, expected_sum* sum) {
    const std::uint64_t runs = script.below(8) == 7 ? 0xFFFFFFFF : script.below(4);
    sum->runs = std::min<std::uint64_t>(sum->runs + runs, 0xFFFFFFFF);
    const bool wide = script.below(3) != 2;
    std::string text = "header runs " + std::to_string(runs) + "\n";
    const unsigned int present = script.byte();
    for (std::size_t i = 0; i < names().size(); ++i) {
        if ((present >> i & 1) == 0)
            continue;
        text += record_text(script, wide, names()[i].first, names()[i].second, sum);
        sum->wide = sum->wide || wide;
    }
    return text;
}

/// The sum as the writer of the tests has it.
static std::string expected_bytes(const expected_sum& sum) {
    bool wide = sum.wide;
    std::string head = "header runs " + std::to_string(sum.runs) + "\n";
    for (const auto& [key, function] : sum.functions)
        wide = wide || std::any_of(function.counts.begin(), function.counts.end(),
                                   [](std::uint64_t n) { return n > kExactSingle; });
    std::string text;
    std::string last;
    for (const auto& [file, name] : names()) {
        const auto function = sum.functions.find(file + "'" + name + "'");
        if (function == sum.functions.end())
            continue;
        if (file != last)
            head += "source " + file + "\n";
        last = file;
        const std::string& shape = sum.shapes.at(function->first);
        const std::size_t blocks = static_cast<std::size_t>(shape[shape.find('+') - 1] - '0');
        const std::size_t colon = shape.find(':');
        text += std::string(wide ? "record 64" : "record 32") + "\nfile " + file + "\nfunction " + name +
                "\n" + shape.substr(0, shape.find('\n') + 1) + "word " +
                std::to_string(function->second.same_word ? function->second.word : 0) + "\n";
        for (std::size_t i = 0; i < function->second.counts.size(); ++i)
            text +=
                std::string(i >= blocks ? "group2 " : "blocks ") +
                (i < blocks && colon != shape.npos ? std::to_string(i + 3) + shape.substr(colon, 3) : "") +
                std::to_string(function->second.counts[i]) + "\n";
    }
    return compile_profile_text(head + text);
}

static outcome merge(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"vexcov-profile", "merge"});
    return run_in_scratch([&] { call_main(run_profile_tool, arguments); });
}

/// Merges everything at once, then in a tree of the script's choice.
static void check_sum(byte_script& script, std::vector<std::string> profiles, const expected_sum& sum) {
    std::vector<std::string> at_once = profiles;
    at_once.insert(at_once.begin(), {"-o", "sum"});
    const outcome end = merge(at_once);
    const bool is_refused = profiles.size() > 1 && (sum.disagree || !sum.whole);
    require((end.status != 0) == is_refused, "profiles that do not agree, and only they, are refused");
    if (is_refused)
        return require(read_scratch("sum.dpi").empty(), "a refused merge leaves nothing");
    const std::string all = read_scratch("sum.dpi");
    require(profiles.size() == 1 || all == expected_bytes(sum), "the sum is that of plain addition");
    for (int step = 0; profiles.size() > 1; ++step) {
        const std::size_t first = script.below(static_cast<unsigned int>(profiles.size()));
        std::swap(profiles[first], profiles.back());
        const std::size_t second = script.below(static_cast<unsigned int>(profiles.size() - 1));
        const std::string result = "step" + std::to_string(step) + ".dpi";
        require(merge({"-o", result, profiles.back(), profiles[second]}).status == 0, "a tree can be merged");
        profiles.pop_back();
        profiles[second] = result;
    }
    require(read_scratch(profiles[0]) == all, "every tree of merges gives the same bytes");
}

/// What is shown is what there is.
static void check_text(const std::string& profile) {
    const outcome shown = run_in_scratch([&] {
        call_main(run_profile_tool, {"vexcov-profile", "show", profile});
    });
    require(shown.status == 0 && compile_profile_text(shown.output) == read_scratch(profile),
            "the text gives the same profile");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    clear_scratch();
    byte_script script(data, size);
    expected_sum sum;
    std::vector<std::string> profiles;
    const std::size_t count = script.below(12) == 11 ? 20 : 1 + script.below(4);
    for (std::size_t i = 0; i < count; ++i) {
        profiles.push_back(std::to_string(i) + ".dpi");
        scratch().put(profiles.back(), compile_profile_text(profile_text(script, &sum)));
    }
    check_text(profiles[0]);
    check_sum(script, profiles, sum);
    // Bytes of the script take the place of some of a profile's; whatever comes of it, nothing breaks.
    std::string damaged = read_scratch(profiles[0]);
    const std::size_t place = script.number() % damaged.size();
    const std::string_view bytes = script.rest();
    damaged.replace(place, bytes.size(), bytes);
    scratch().put("damaged.dpi", damaged);
    scratch().put("damaged.spi", bytes.substr(bytes.size() / 2));
    merge({"-o", "sum", "-newest", "damaged.dpi", profiles.back(), "damaged.dpi"});
    for (const char* form : {"-json", "-functions"})
        run_in_scratch([&] { call_main(run_profile_tool, {"vexcov-profile", "show", form, "damaged.dpi"}); });
    run_in_scratch([&] { call_main(run_profile_tool, {"vexcov-profile", "show", "damaged.dpi"}); });
    run_in_scratch([] {
        try {
            call_main(run_profile_tool, {"vexcov-profile", "check", "damaged.dpi"});
        } catch (const run_end& end) {
            if (end.status != 2)
                throw;
        }
    });
    return 0;
}
