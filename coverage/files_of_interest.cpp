#include "coverage/files_of_interest.h"

#include "common/fatal.h"
#include "common/file_ptr.h"
#include "common/message.h"
#include "coverage/pattern_set.h"
#include "driver/run_config.h"

#include <cstdio>
#include <cstring>

std::vector<std::string> moduleName;

/// Bits of the patterns in the set.
constexpr std::uint8_t kIncludes = 1;
constexpr std::uint8_t kExcludes = 2;

static pattern_set patterns;              ///< moduleName, ready to be matched
static std::size_t patterns_prepared = 0; ///< how much of moduleName is in it
static std::string last_file;             ///< consecutive routines mostly belong to one file:
static bool last_answer = false;          ///< the answer for it
static bool last_valid = false;

namespace {

/// A kind of marker line.
struct marker_line {
    const char* keyword;             ///< without its colon, as messages show it
    std::vector<std::string>* texts; ///< where its text goes
};

} // namespace

static const marker_line marker_lines[] = {{"ONE_LINE_NOTFEASIBLE", &one_line_disable},
                                           {"BEGIN_NOTFEASIBLE", &start_disable_block},
                                           {"END_NOTFEASIBLE", &end_disable_block}};

char* find_quota(char* p) {
    while (*p != '"') {
        if (*p == '\n' || *p == '\0')
            return nullptr;
        ++p;
    }
    char* const text = ++p;
    while (*p != '"') {
        if (*p == '\n' || *p == '\0')
            return nullptr;
        ++p;
    }
    *p = '\0';
    if (*text == '\0') {
        print_error("you specified empty marker for infeasible");
        pgt_Exit(1);
    }
    return text;
}

/// True when `line` holds the keyword of `marker` with its colon.
static bool is_marker_line(const char* line, const marker_line& marker) {
    const std::size_t length = std::strlen(marker.keyword);
    for (const char* p = std::strstr(line, marker.keyword); p; p = std::strstr(p + 1, marker.keyword))
        if (p[length] == ':')
            return true;
    return false;
}

static void read_line(char* line, const char* path) {
    for (const marker_line& marker : marker_lines) {
        if (!is_marker_line(line, marker))
            continue;
        // Deliberate: the keyword is meant to open the line. The search for the quotation mark starts behind
        // where it then ends, so a text in front of the keyword cannot be taken for the marker's.
        const char* text = find_quota(line + std::strlen(marker.keyword) + 1);
        if (!text) {
            print_error("File %s does not contain quotas for %s", path, marker.keyword);
            pgt_Exit(1);
        }
        marker.texts->push_back(text);
        Infeasible_markers_specified = true;
        return;
    }
    line[std::strcspn(line, "\n")] = '\0';
    moduleName.push_back(line);
}

/// Ends the run when the file and the command line together make no sense.
static void check_component_file(const char* path) {
    const bool begins = !start_disable_block.empty();
    const bool ends = !end_disable_block.empty();
    if (moduleName.empty() && one_line_disable.empty() && !begins && !ends) {
        print_error("File %s does not contain any component information", path);
        pgt_Exit(1);
    }
    if (begins && !ends) {
        print_error("Component file %s specifies start block marker but not does not specify end block "
                    "marker",
                    path);
        pgt_Exit(1);
    }
    if (ends && !begins) {
        print_error("Component file %s specifies end block marker but not does not specify start block "
                    "marker",
                    path);
        pgt_Exit(1);
    }
}

int getModuleNames(const char* path) {
    if (!path)
        return 0;
    file_ptr file(std::fopen(path, "r"));
    if (!file) {
        print_error("Couldn't open the component file %s", path);
        pgt_Exit(1);
    }
    char line[4096]; // a longer line counts as several
    while (std::fgets(line, sizeof line, file.get()))
        read_line(line, path);
    const bool failed = std::ferror(file.get()) != 0;
    if (std::fclose(file.release()) != 0)
        print_warning("couldn't close the component file %s", path);
    patterns_prepared = 0;
    check_component_file(path);
    if (failed) { // some of it may be missing
        print_error("cannot read %s", path);
        pgt_Exit(1);
    }
    return 0;
}

/// Puts moduleName into the pattern set, once for all files.
static void prepare_patterns() {
    patterns.clear();
    for (const std::string& pattern : moduleName) {
        if (pattern[0] == '~')
            patterns.add(std::string_view(pattern).substr(1), kExcludes);
        else
            patterns.add(pattern, kIncludes);
    }
    patterns.prepare();
    patterns_prepared = moduleName.size();
    last_valid = false;
}

bool isInComponents(const char* fileName, const char* /*displayName*/, const char* /*procName*/) {
    if (moduleName.empty())
        return true;
    if (patterns_prepared != moduleName.size())
        prepare_patterns();
    if (!last_valid || last_file != fileName) {
        last_file = fileName;
        last_answer = patterns.match(last_file, kExcludes) == kIncludes;
        last_valid = true;
    }
    return last_answer;
}
