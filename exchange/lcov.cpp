// LCOV's trace file, in the grammar of its first version, which every reader knows:
//
//   for each file:
//     TN:
//     SF:NAME
//     FN:LINE,SYMBOL        for each function in order of lines
//     FNDA:COUNT,SYMBOL     likewise
//     FNF:NUMBER
//     FNH:NUMBER            of those called
//     BRDA:LINE,0,N,TAKEN   for each block of a line that is shown in several; "-" where the line was not
//                           reached
//     BRF:NUMBER            only where there are some, and so the next
//     BRH:NUMBER            of those taken
//     DA:LINE,COUNT         for each line that holds code
//     LF:NUMBER
//     LH:NUMBER             of those covered
//     end_of_record
//
// Newer versions refuse figures that contradict each other. So a function that was never called has no
// record where its first line was reached in another one, and a function begins on a line that holds code:
// where its first one is that of a macro, on the next one that does, or it has no record.
#include "common/text_buffer.h"
#include "exchange/safe_text.h"
#include "exchange/writer.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

namespace {

/// A function that gets a record.
struct traced_function {
    std::uint32_t line;
    std::string_view name;
    std::uint64_t count;
};

class lcov_writer : public exchange_writer {
  public:
    explicit lcov_writer(const writer_target& target) : out_(target.stream) {}

    void add(const file_coverage& file) override;
    void finish(const coverage_totals&) override { out_.flush(); }

  private:
    void collect_functions(const file_coverage& file);
    void put_functions();
    void put_branches(const file_coverage& file);
    void put_lines(const file_coverage& file);
    void put_count(std::string_view head, std::int64_t count);

    text_buffer out_;
    std::vector<traced_function> functions_; ///< of the file at hand; kept for its memory
};

} // namespace

void lcov_writer::put_count(std::string_view head, std::int64_t count) {
    out_.put(head);
    out_.put_number(count);
    out_.put('\n');
}

/// The first line of a function that holds code, or null where none does.
static const line_coverage* first_line_of(const file_coverage& file, const source_function& function) {
    const std::uint32_t number = static_cast<std::uint32_t>(function.line);
    const auto found = std::lower_bound(
        file.lines.begin(), file.lines.end(), number,
        [](const line_coverage& line, std::uint32_t wanted) { return line.number < wanted; });
    const std::uint32_t last = function.called ? std::max(function.last.line, number) : number;
    return found != file.lines.end() && found->number <= last ? &*found : nullptr;
}

void lcov_writer::collect_functions(const file_coverage& file) {
    functions_.clear();
    std::unordered_set<std::string_view> names;
    for (const source_function& function : file.analysis.functions) {
        if (function.line <= 0)
            continue;
        const line_coverage* const line = first_line_of(file, function);
        if (!line)
            continue;
        const bool called = function.called && (!file.analysis.differential || function.covered > 0);
        const bool contradicts = line->covered() != called;
        if (!called && contradicts)
            continue;
        if (names.insert(function.name).second)
            functions_.push_back(
                {line->number, function.name,
                 contradicts || !called ? 0 : std::max<std::uint64_t>(function.entry_count, 1)});
    }
    std::sort(functions_.begin(), functions_.end(), [](const traced_function& a, const traced_function& b) {
        return a.line != b.line ? a.line < b.line : a.name < b.name;
    });
}

void lcov_writer::put_functions() {
    for (const traced_function& function : functions_) {
        out_.put("FN:");
        out_.put_number(function.line);
        out_.put(',');
        put_line_text(out_, function.name, ',');
        out_.put('\n');
    }
    for (const traced_function& function : functions_) {
        out_.put("FNDA:");
        out_.put_number(function.count);
        out_.put(',');
        put_line_text(out_, function.name, ',');
        out_.put('\n');
    }
    put_count("FNF:", static_cast<std::int64_t>(functions_.size()));
    put_count("FNH:", std::count_if(functions_.begin(), functions_.end(),
                                    [](const traced_function& each) { return each.count != 0; }));
}

void lcov_writer::put_branches(const file_coverage& file) {
    covered_count all;
    for (const line_coverage& line : file.lines) {
        if (line.blocks < 2)
            continue;
        for (std::uint32_t block = 0; block < line.blocks; ++block) {
            out_.put("BRDA:");
            out_.put_number(line.number);
            out_.put(",0,");
            out_.put_number(block);
            out_.put(',');
            if (line.covered())
                out_.put_number(block < line.executed ? line.count : 0);
            else
                out_.put('-');
            out_.put('\n');
        }
        all.total += line.blocks;
        all.covered += line.executed;
    }
    if (all.total == 0)
        return;
    put_count("BRF:", all.total);
    put_count("BRH:", all.covered);
}

void lcov_writer::put_lines(const file_coverage& file) {
    for (const line_coverage& line : file.lines) {
        out_.put("DA:");
        out_.put_number(line.number);
        out_.put(',');
        out_.put_number(line.count);
        out_.put('\n');
    }
    put_count("LF:", file.figures.lines.total);
    put_count("LH:", file.figures.lines.covered);
}

void lcov_writer::add(const file_coverage& file) {
    if (file.lines.empty()) // readers warn about a record without lines
        return;
    out_.put("TN:\n"
             "SF:");
    put_line_text(out_, file.name, '\0');
    out_.put('\n');
    collect_functions(file);
    put_functions();
    put_branches(file);
    put_lines(file);
    out_.put("end_of_record\n");
}

std::unique_ptr<exchange_writer> make_lcov_writer(const writer_target& target) {
    return std::make_unique<lcov_writer>(target);
}
