// Input: a byte below 128, then options and a diff; or a byte from 128 on, then a script of files, whose diff
// is written and read. What is read does not depend on the pieces in which it came, names are there, and
// lines lie in order; of a written diff they are the lines that the script adds.
#include "changes/unified_diff.h"
#include "fuzz/harness.h"

#include <algorithm>
#include <set>

static constexpr std::uint32_t kLargestLine = 0x7fffffff;

namespace {

struct reading {
    bool fine = true;
    std::string fault;
    std::vector<changed_file> files;
};

/// A file of a script: what its diff should be read as, and the diff.
struct written_file {
    std::string name;
    std::vector<line_range> lines;
    std::string diff;
};

} // namespace

static reading read(std::string_view diff, int strip, std::size_t piece_size) {
    reading result;
    unified_diff_reader reader(strip);
    for (std::size_t at = 0; result.fine && at < diff.size(); at += piece_size)
        result.fine = reader.feed(diff.substr(at, piece_size));
    result.fine = result.fine && reader.finish();
    result.fault = reader.fault();
    if (result.fine)
        result.files = reader.take_files();
    return result;
}

static void check_files(const reading& result, std::string_view diff) {
    std::set<std::string> names;
    std::uint64_t added = 0;
    for (const changed_file& file : result.files) {
        require(!file.name.empty(), "a name for every file");
        require(file.change == file_change::deleted || names.insert(file.name).second, "each name once");
        require(file.change != file_change::deleted || file.lines.empty(), "no lines in a deleted file");
        std::uint32_t end = 0; // behind the range before
        for (const line_range& range : file.lines) {
            require(range.first > end && range.first <= range.last && range.last <= kLargestLine,
                    "ranges in order, apart, and within what a file can hold");
            end = range.last + 1;
            added += range.last - range.first + 1;
        }
    }
    std::uint64_t plus = diff.starts_with('+') ? 1 : 0;
    for (std::size_t i = 1; i < diff.size(); ++i)
        plus += diff[i - 1] == '\n' && diff[i] == '+' ? 1 : 0;
    require(added <= plus, "no more added lines than lines that begin with a plus");
}

static void check_raw(byte_script script) {
    const int strip = static_cast<int>(script.below(4)) - 1;
    const std::size_t piece_size = 1 + script.below(64);
    const std::string_view diff = script.rest();
    const reading whole = read(diff, strip, diff.size() + 1);
    const reading pieces = read(diff, strip, piece_size);
    require(whole.fine == pieces.fine && whole.fault == pieces.fault, "the same fault in pieces");
    require(whole.fine == whole.fault.empty(), "a fault just where reading fails");
    require(std::equal(whole.files.begin(), whole.files.end(), pieces.files.begin(), pieces.files.end(),
                       [](const changed_file& a, const changed_file& b) {
                           return a.name == b.name && a.old_name == b.old_name && a.change == b.change &&
                                  a.lines == b.lines;
                       }),
            "the same files in pieces");
    check_files(whole, diff);
}

/// As git shows a name: in quotes where a byte needs it.
static std::string quoted(const std::string& name) {
    std::string text;
    for (const char c : name) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f && c != '"' && c != '\\') {
            text += c;
            continue;
        }
        text += '\\';
        for (const int shift : {6, 3, 0})
            text += static_cast<char>('0' + ((byte >> shift) & 7));
    }
    return text == name ? name : "\"" + text + "\"";
}

/// Writes a hunk of the script behind line `*old_line` and `*new_line` of the file.
static void write_hunk(byte_script& script, std::uint32_t* old_line, std::uint32_t* new_line,
                       written_file* file) {
    std::string body;
    std::uint32_t counts[2] = {0, 0};
    for (unsigned int lines = 1 + script.below(9); lines > 0; --lines) {
        const char kind = " +-"[script.below(3)];
        counts[0] += kind != '+' ? 1 : 0;
        counts[1] += kind != '-' ? 1 : 0;
        const std::uint32_t line = *new_line + counts[1];
        if (kind == '+' && !file->lines.empty() && file->lines.back().last + 1 == line)
            file->lines.back().last = line;
        else if (kind == '+')
            file->lines.push_back({line, line});
        body += kind;
        body += script.one_of("x|-- y|++ z|@@ -1 +1 @@|diff --git a b||\r", '|');
        body += script.below(8) == 0 ? "\n\\ No newline\n" : "\n";
    }
    const auto side = [](std::uint32_t before, std::uint32_t count) {
        return std::to_string(count == 0 ? before : before + 1) +
               (count == 1 ? "" : "," + std::to_string(count));
    };
    file->diff += "@@ -" + side(*old_line, counts[0]) + " +" + side(*new_line, counts[1]) + " @@\n" + body;
    *old_line += counts[0];
    *new_line += counts[1];
}

static written_file write_file(byte_script& script, const std::string& number) {
    written_file file;
    file.name =
        std::string(script.one_of("src/|a/b/||a/", '|')) + std::string(script.take(script.below(6))) + number;
    std::replace(file.name.begin(), file.name.end(), '\0', 'n');
    const std::string_view prefixes = script.one_of("a/ b/|i/ w/|old/ new/|=", '|');
    const std::vector<std::string_view> both = split(prefixes == "=" ? " " : prefixes);
    const std::string old_name = quoted(std::string(both[0]) + file.name);
    const std::string new_name = quoted(std::string(both[1]) + file.name);
    const bool blank = file.name.find(' ') != std::string::npos;
    const auto tab = [blank](const std::string& name) {
        return name + (blank && name[0] != '"' ? "\t\n" : "\n");
    };
    file.diff = "diff --git " + old_name + " " + new_name + "\nindex 1..2 100644\n--- " + tab(old_name) +
                "+++ " + tab(new_name);
    std::uint32_t old_line = 0;
    std::uint32_t new_line = 0;
    for (unsigned int hunks = 1 + script.below(4); hunks > 0; --hunks) {
        const std::uint32_t gap = 1 + script.number() % 100'000;
        old_line += gap;
        new_line += gap;
        write_hunk(script, &old_line, &new_line, &file);
    }
    return file;
}

static void check_written(byte_script script) {
    std::vector<written_file> files;
    std::string diff;
    while (!script.empty() && files.size() < 8) {
        files.push_back(write_file(script, std::to_string(files.size())));
        diff += files.back().diff;
    }
    const reading result = read(diff, kDetectPrefix, 7);
    require(result.fine, "a written diff can be read");
    require(std::equal(files.begin(), files.end(), result.files.begin(), result.files.end(),
                       [](const written_file& a, const changed_file& b) {
                           return a.name == b.name && a.lines == b.lines;
                       }),
            "the names and lines that were written");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    byte_script script(data, size);
    if (script.byte() < 128)
        check_raw(script);
    else
        check_written(script);
    return 0;
}
