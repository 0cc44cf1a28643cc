#include "import/lcov/trace_reader.h"

#include "common/message.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

constexpr std::size_t kLongestLine = std::size_t{1} << 24;

/// A record that means something, or nothing that is needed.
struct trace_reader::record_kind {
    std::string_view name;
    bool in_section; ///< it can stand in sections only
    void (trace_reader::*take)(std::string_view rest);
};

const trace_reader::record_kind trace_reader::kRecords[] = {
    {"DA", true, &trace_reader::take_count},     {"BRDA", true, &trace_reader::take_branch},
    {"FN", true, &trace_reader::take_function},  {"FNDA", true, &trace_reader::take_function_count},
    {"FNL", true, &trace_reader::take_place},    {"FNA", true, &trace_reader::take_alias},
    {"SF", false, &trace_reader::begin_section}, {"TN", false, &trace_reader::pass_over},
    {"VER", false, &trace_reader::pass_over},    {"FNF", false, &trace_reader::pass_over},
    {"FNH", false, &trace_reader::pass_over},    {"LF", false, &trace_reader::pass_over},
    {"LH", false, &trace_reader::pass_over},     {"BRF", false, &trace_reader::pass_over},
    {"BRH", false, &trace_reader::pass_over},    {"MCDC", false, &trace_reader::pass_over},
    {"MCF", false, &trace_reader::pass_over},    {"MCH", false, &trace_reader::pass_over},
};

void trace_reader::fail(const char* what) const {
    end_with_error("%s, line %llu: %s; make the trace again", input_.c_str(),
                   static_cast<unsigned long long>(line_), what);
}

/// Takes the text up to the next comma, and the comma.
static std::string_view next_field(std::string_view* rest) {
    const std::string_view field = rest->substr(0, rest->find(','));
    rest->remove_prefix(std::min(rest->size(), field.size() + 1));
    return field;
}

static bool is_number(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::uint32_t trace_reader::line_number(std::string_view text) const {
    std::uint32_t value = 0;
    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || value > kLargestLine)
        fail("a line number is missing or cannot be");
    return value;
}

/// As std::from_chars reads a floating-point number, which some C++ libraries cannot do. False where the text
/// is none.
static bool read_real(const std::string& text, double* number) {
    if (text.empty() || std::strchr(" \t\n\v\f\r+", text.front()) || text.find_first_of("xX") != text.npos)
        return false;
    char* end = nullptr;
    *number = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size() && !std::isnan(*number);
}

/// Counts that no program can reach are clamped. Some writers give them with an exponent.
std::uint64_t trace_reader::count(std::string_view text) {
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ec == std::errc() && result.ptr == end && value <= kLargestCount)
        return value;
    double number = 0;
    if (!read_real(std::string(text), &number))
        fail("a count is missing or is no number");
    if (number >= 0 && number < 0x1p63)
        return static_cast<std::uint64_t>(number);
    ++clamped_;
    return text.front() == '-' ? 0 : kLargestCount;
}

void trace_reader::begin_section(std::string_view path) {
    if (open_) // some writers leave out the end
        end_section();
    if (path.empty())
        fail("the name of the source file is missing");
    section_.file = path;
    section_.lines.clear();
    section_.branches.clear();
    section_.functions.clear();
    names_.clear();
    places_.clear();
    open_ = any_section_ = true;
}

/// "FN:3,name" or "FN:3,9,name".
void trace_reader::take_function(std::string_view rest) {
    trace_function function;
    function.line = line_number(next_field(&rest));
    const std::size_t comma = rest.find(',');
    if (comma != std::string_view::npos && is_number(rest.substr(0, comma)))
        function.end = line_number(next_field(&rest));
    function.name = rest;
    ++names_[function.name].functions;
    section_.functions.push_back(std::move(function));
}

void trace_reader::take_function_count(std::string_view rest) {
    const std::uint64_t entries = count(next_field(&rest));
    names_[std::string(rest)].counts.push_back(entries);
}

void trace_reader::take_place(std::string_view rest) {
    const std::string index(next_field(&rest));
    const std::uint32_t line = line_number(next_field(&rest));
    places_[index] = {line, rest.empty() ? 0 : line_number(next_field(&rest))};
}

void trace_reader::take_alias(std::string_view rest) {
    const auto place = places_.find(std::string(next_field(&rest)));
    if (place == places_.end())
        fail("the record FNA has an index that no FNL had");
    const std::uint64_t entries = count(next_field(&rest));
    section_.functions.push_back({place->second.first, place->second.second, std::string(rest), entries});
}

void trace_reader::take_count(std::string_view rest) {
    trace_line line;
    line.line = line_number(next_field(&rest));
    line.counted = true;
    line.count = count(next_field(&rest));
    if (line.line != 0)
        section_.lines.push_back(line);
}

void trace_reader::take_branch(std::string_view rest) {
    trace_branch branch;
    branch.line = line_number(next_field(&rest));
    branch.exception = rest.starts_with('e');
    const std::size_t comma = rest.rfind(','); // what a branch is called may hold commas itself
    if (comma == std::string_view::npos || comma == rest.find(','))
        fail("the record BRDA has too few fields");
    const std::string_view taken = rest.substr(comma + 1);
    branch.taken = taken != "-" && count(taken) != 0;
    branch.id = std::hash<std::string_view>()(rest.substr(0, comma)); // of the block and the branch
    if (branch.line != 0)
        section_.branches.push_back(branch);
}

/// Counts come by name. Functions of one name get theirs in turn; when there are fewer, the last is for all
/// others.
void trace_reader::count_functions() {
    std::unordered_map<std::string_view, std::size_t> taken;
    for (trace_function& function : section_.functions) {
        const auto same = names_.find(function.name);
        if (same == names_.end() || same->second.counts.empty())
            continue;
        const std::vector<std::uint64_t>& counts = same->second.counts;
        const std::size_t number = taken[same->first]++;
        function.entries = counts[std::min(number, counts.size() - 1)];
        if (number + 1 == same->second.functions) { // counts that are left, such as those of a second test
            for (std::size_t i = number + 1; i < counts.size(); ++i)
                function.entries = add_counts(function.entries, counts[i]);
        }
    }
}

/// clang writes the source file in front of the names of local functions: "file.c:name", "path/file.c;name".
/// For what a header defines, it is that of another file; there, only a mangled name shows that it is one.
static std::string_view without_file(std::string_view name, std::string_view file) {
    const std::size_t separator = name.find_first_of(":;");
    if (separator == std::string_view::npos || separator == 0 || separator + 1 == name.size())
        return name;
    const std::string_view prefix = name.substr(0, separator);
    const std::string_view own = name.substr(separator + 1);
    const bool same_file = own.front() != ':' && (file.ends_with(prefix) || prefix.ends_with(file));
    return same_file || own.starts_with("_Z") ? own : name;
}

void trace_reader::end_section() {
    count_functions();
    for (trace_function& function : section_.functions)
        function.name.erase(0, function.name.size() - without_file(function.name, section_.file).size());
    std::erase_if(section_.functions, [](const trace_function& function) { return function.line == 0; });
    on_section_(section_);
    open_ = false;
}

void trace_reader::take_record(std::string_view name, std::string_view rest) {
    for (const record_kind& kind : kRecords) {
        if (kind.name != name)
            continue;
        if (kind.in_section && !open_)
            fail("a record stands outside of every source file");
        (this->*kind.take)(rest);
        return;
    }
    ++unknown_;
}

void trace_reader::take_line(std::string_view line) {
    ++line_;
    while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
        line.remove_suffix(1);
    if (line.empty() || line.front() == '#')
        return;
    if (line == "end_of_record") {
        if (open_)
            end_section();
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos)
        ++unknown_;
    else
        take_record(line.substr(0, colon), line.substr(colon + 1));
}

void trace_reader::feed(std::string_view piece) {
    for (std::size_t newline = piece.find('\n'); newline != std::string_view::npos;
         newline = piece.find('\n')) {
        if (cut_.empty()) {
            take_line(piece.substr(0, newline));
        } else {
            cut_ += piece.substr(0, newline);
            take_line(cut_);
            cut_.clear();
        }
        piece.remove_prefix(newline + 1);
    }
    if (cut_.size() + piece.size() > kLongestLine)
        fail("a line is longer than 16 MiB: this is no trace file of LCOV");
    cut_ += piece;
}

void trace_reader::finish() {
    if (!cut_.empty())
        take_line(cut_);
    if (!any_section_)
        end_with_error("%s is no trace file of LCOV: it has no record SF; give a file that lcov or another "
                       "tool wrote in its format",
                       input_.c_str());
    if (open_)
        end_with_error(
            "%s ends in the middle: the last record end_of_record is missing; make the trace again",
            input_.c_str());
}
