// Input: a component-list file, a byte 1, and source names, one a line. The patterns, the markers and the
// answer for each name are compared with a plain reading.
#include "coverage/files_of_interest.h"
#include "driver/run_config.h"
#include "fuzz/harness.h"
#include "markers/marker_conflicts.h"

#include <algorithm>

namespace {

/// What a plain reading finds.
struct plain_list {
    bool refused = false;
    std::vector<std::string> patterns;
    std::vector<std::string> markers[3]; ///< one-line, begin, end
};

} // namespace

/// The text in quotation marks from `start` on; empty when there is none.
static std::string quoted(const std::string& line, std::size_t start) {
    const std::size_t open = line.find('"', start);
    const std::size_t close = open == std::string::npos ? open : line.find('"', open + 1);
    const std::size_t newline = line.find('\n', start);
    return close == std::string::npos || newline < close ? std::string()
                                                         : line.substr(open + 1, close - open - 1);
}

static void read_plain_line(const std::string& line, plain_list* list) {
    static const std::string keywords[] = {"ONE_LINE_NOTFEASIBLE:", "BEGIN_NOTFEASIBLE:", "END_NOTFEASIBLE:"};
    for (std::size_t kind = 0; kind < 3; ++kind) {
        if (line.find(keywords[kind]) == std::string::npos)
            continue;
        const std::string text = quoted(line, keywords[kind].size());
        list->refused = list->refused || text.empty();
        list->markers[kind].push_back(text);
        return;
    }
    list->patterns.push_back(line.substr(0, line.find('\n')));
}

static plain_list read_plainly(std::string_view text) {
    plain_list list;
    while (!text.empty() && !list.refused) {
        std::size_t length = std::min<std::size_t>(text.find('\n'), 4094) + 1;
        length = std::min(length, text.size());
        const std::string_view line = text.substr(0, std::min(length, text.find('\0')));
        read_plain_line(std::string(line), &list);
        text.remove_prefix(length);
    }
    const bool begins = !list.markers[1].empty();
    const bool ends = !list.markers[2].empty();
    list.refused = list.refused || begins != ends ||
                   (list.patterns.empty() && list.markers[0].empty() && !begins && !ends);
    return list;
}

static bool is_of_interest(const std::string& name, const std::vector<std::string>& patterns) {
    bool included = patterns.empty();
    for (const std::string& pattern : patterns) {
        if (!pattern.starts_with('~'))
            included = included || name.find(pattern) != std::string::npos;
        else if (name.find(pattern.substr(1)) != std::string::npos)
            return false;
    }
    return included;
}

static bool have_common_text(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    return std::find_first_of(a.begin(), a.end(), b.begin(), b.end()) != a.end();
}

static void check_answers(const plain_list& plain, std::string_view names) {
    require(moduleName == plain.patterns, "the patterns");
    require(one_line_disable == plain.markers[0] && start_disable_block == plain.markers[1] &&
                end_disable_block == plain.markers[2],
            "the markers");
    const bool conflict = have_common_text(plain.markers[0], plain.markers[1]) ||
                          have_common_text(plain.markers[0], plain.markers[2]) ||
                          have_common_text(plain.markers[1], plain.markers[2]);
    require((check_NFmarkers_intersect() == 1) == conflict, "conflicts of the markers");
    while (!names.empty()) {
        const std::string line(names.substr(0, names.find('\n')));
        const std::string name = line.c_str(); // up to a NUL
        require(isInComponents(name.c_str(), "", "") == is_of_interest(name, plain.patterns),
                "the files of interest");
        names.remove_prefix(std::min(names.size(), line.size() + 1));
    }
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end_of_list = std::min(input.find('\1'), input.size());
    const std::string_view list = input.substr(0, end_of_list);
    const std::string_view names = input.substr(std::min(end_of_list + 1, size));
    scratch().put("list", list);
    const plain_list plain = read_plainly(list);
    const outcome end = run_in_scratch([&] {
        getModuleNames("list");
        check_answers(plain, names);
    });
    require(end.ended == plain.refused, "a list is refused exactly when it makes no sense");
    return 0;
}
