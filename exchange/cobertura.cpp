// Cobertura's XML, valid against its DTD coverage-04:
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <!DOCTYPE coverage SYSTEM "...">
//   <coverage RATES lines-covered lines-valid branches-covered branches-valid complexity version timestamp>
//   <sources>
//   <source>ROOT</source>
//   </sources>
//   <packages>
//     <package name="FOLDER" RATES>                 folders in ascending order
//     <classes>
//       <class name="FILE" filename="FILE" RATES>   files of the folder in ascending order
//       <methods>
//         <method name="SHOWN" signature="SYMBOL" RATES><lines>LINE</lines></method>
//       </methods>
//       <lines>
//         <line number="N" hits="COUNT"/>
//         <line number="N" hits="COUNT" branch="true" condition-coverage="50% (1/2)"/>
//       </lines>
//       </class>
//     </classes>
//     </package>
//   </packages>
//   </coverage>
//
// Branches are the blocks of lines that are shown in several. The figures of the head and of a package stand
// in front of its classes, which wait in a spool for them.
#include "common/companion.h"
#include "common/message.h"
#include "common/text_buffer.h"
#include "common/version.h"
#include "exchange/parts.h"
#include "exchange/safe_text.h"
#include "exchange/spool.h"
#include "exchange/writer.h"
#include "inputs/percent_text.h"

#include <algorithm>
#include <climits>
#include <set>
#include <span>
#include <string_view>
#include <utility>

namespace {

/// Figures that rates are made of.
struct rates {
    covered_count lines;
    covered_count branches;

    void add(const rates& other);
};

/// A class that waits in the spool.
struct waiting_class {
    std::string name;
    std::string_view folder() const;
    std::uint64_t offset;
    std::uint64_t size; ///< bytes
    rates figures;
};

/// How often the lines of a file up to each one are counted and covered.
using line_sums = std::vector<covered_count>;

class cobertura_writer : public exchange_writer {
  public:
    explicit cobertura_writer(const writer_target& target)
        : target_(target), classes_text_(spool_.stream()) {}

    void add(const file_coverage& file) override;
    void finish(const coverage_totals& totals) override;
    void replaced() override;

  private:
    void put_methods(const file_coverage& file);
    void put_method(const file_coverage& file, const source_function& function);
    covered_count lines_of(const file_coverage& file, const source_function& function) const;
    void sum_up_lines(const file_coverage& file);
    void put_document(std::FILE* stream, std::span<const waiting_class> classes);
    void put_head(text_buffer& out, std::span<const waiting_class> classes);
    std::span<const waiting_class> next_part(std::size_t from) const;
    void write_parts();

    writer_target target_;
    spool spool_;
    text_buffer classes_text_; ///< to the spool
    std::vector<waiting_class> classes_;
    line_sums sums_; ///< of the file at hand; kept for its memory
    std::uint64_t written_ = 0;
    std::size_t parts_ = 0; ///< files that were written
};

} // namespace

/// Room for what stands around the classes of a part and of a package, without their names.
constexpr std::uint64_t kHeadSize = 700;
constexpr std::uint64_t kPackageSize = 150;

/// Longest form of a byte of a name.
constexpr std::uint64_t kLongestEscape = 6;

void rates::add(const rates& other) {
    lines.total += other.lines.total;
    lines.covered += other.lines.covered;
    branches.total += other.branches.total;
    branches.covered += other.branches.covered;
}

std::string_view waiting_class::folder() const {
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string_view(".") : std::string_view(name).substr(0, slash);
}

// A line of the output is a line here.
// clang-format off

/// A part of 1 with four digits, cut off.
static void put_rate(text_buffer& out, const covered_count& count) {
    const std::int64_t rate = ten_thousandths(count);
    char text[16];
    std::snprintf(text, sizeof text, "%d.%04d", static_cast<int>(rate / 10000),
                  static_cast<int>(rate % 10000));
    out.put(text);
}

static void put_rates(text_buffer& out, const rates& figures) {
    out.put(R"( line-rate=")");
    put_rate(out, figures.lines);
    out.put(R"(" branch-rate=")");
    put_rate(out, figures.branches);
    out.put('"');
}

static void put_line(text_buffer& out, const line_coverage& line) {
    out.put(R"(<line number=")");
    out.put_number(line.number);
    out.put(R"(" hits=")");
    // Deliberate: readers hold hits in 32 bits with a sign, and some show more than that as none.
    out.put_number(std::min<std::uint64_t>(line.count, INT_MAX));
    if (line.blocks > 1) {
        out.put(R"(" branch="true" condition-coverage=")");
        out.put_number(std::uint64_t{line.executed} * 100 / line.blocks);
        out.put("% (");
        out.put_number(line.executed);
        out.put('/');
        out.put_number(line.blocks);
        out.put(')');
    }
    out.put(R"("/>)" "\n");
}

static rates rates_of(const file_coverage& file) {
    rates figures = {file.figures.lines, {}};
    for (const line_coverage& line : file.lines) {
        if (line.blocks > 1) {
            figures.branches.total += line.blocks;
            figures.branches.covered += line.executed;
        }
    }
    return figures;
}

void cobertura_writer::sum_up_lines(const file_coverage& file) {
    sums_.assign(1, {});
    for (const line_coverage& line : file.lines)
        sums_.push_back({sums_.back().total + 1, sums_.back().covered + (line.covered() ? 1 : 0)});
}

/// The lines from a function's first to its last block; its first line for one that was never called.
covered_count cobertura_writer::lines_of(const file_coverage& file, const source_function& function) const {
    const std::uint32_t line = static_cast<std::uint32_t>(function.line);
    const auto first = std::lower_bound(
        file.lines.begin(), file.lines.end(), function.called ? function.first.line : line,
        [](const line_coverage& each, std::uint32_t wanted) { return each.number < wanted; });
    const auto last = std::upper_bound(
        first, file.lines.end(), function.called ? function.last.line : line,
        [](std::uint32_t wanted, const line_coverage& each) { return wanted < each.number; });
    const covered_count& before = sums_[static_cast<std::size_t>(first - file.lines.begin())];
    const covered_count& behind = sums_[static_cast<std::size_t>(last - file.lines.begin())];
    return {behind.total - before.total, behind.covered - before.covered};
}

void cobertura_writer::put_method(const file_coverage& file, const source_function& function) {
    text_buffer& out = classes_text_;
    out.put(R"(<method name=")");
    put_xml(out, function.shown_name);
    out.put(R"(" signature=")");
    put_xml(out, function.name);
    out.put('"');
    put_rates(out, {lines_of(file, function), {function.blocks, function.covered}});
    out.put(R"( complexity="0"><lines>)");
    const bool covered = function.called && (!file.analysis.differential || function.covered > 0);
    put_line(out, {static_cast<std::uint32_t>(function.line), 1, covered ? 1U : 0U,
                   covered ? std::max<std::uint64_t>(function.entry_count, 1) : 0});
    out.put("</lines></method>\n");
}

void cobertura_writer::put_methods(const file_coverage& file) {
    sum_up_lines(file);
    std::set<std::pair<std::string_view, std::string_view>> names; // one that comes twice ends an import
    for (const source_function& function : file.analysis.functions)
        if (function.line > 0 && names.emplace(function.shown_name, function.name).second)
            put_method(file, function);
}

void cobertura_writer::add(const file_coverage& file) {
    text_buffer& out = classes_text_;
    const rates figures = rates_of(file);
    out.put(R"(<class name=")");
    put_xml(out, file.name);
    out.put(R"(" filename=")");
    put_xml(out, file.name);
    out.put('"');
    put_rates(out, figures);
    out.put(R"( complexity="0">)" "\n"
            "<methods>\n");
    put_methods(file);
    out.put("</methods>\n"
            "<lines>\n");
    for (const line_coverage& line : file.lines)
        put_line(out, line);
    out.put("</lines>\n"
            "</class>\n");
    out.flush();
    const std::uint64_t end = spool_.size();
    classes_.push_back({file.name, written_, end - written_, figures});
    written_ = end;
}

void cobertura_writer::put_head(text_buffer& out, std::span<const waiting_class> classes) {
    rates all;
    for (const waiting_class& each : classes)
        all.add(each.figures);
    out.put(R"(<?xml version="1.0" encoding="UTF-8"?>)" "\n"
            R"(<!DOCTYPE coverage SYSTEM "http://cobertura.sourceforge.net/xml/coverage-04.dtd">)" "\n"
            "<coverage");
    put_rates(out, all);
    const std::pair<const char*, std::int64_t> counts[] = {{R"( lines-covered=")", all.lines.covered},
                                                           {R"(" lines-valid=")", all.lines.total},
                                                           {R"(" branches-covered=")", all.branches.covered},
                                                           {R"(" branches-valid=")", all.branches.total}};
    for (const auto& [attribute, count] : counts) {
        out.put(attribute);
        out.put_number(count);
    }
    out.put(R"(" complexity="0" version="vexcov )");
    out.put(program_version());
    out.put(R"(" timestamp=")");
    out.put_number(target_.options.timestamp);
    out.put(R"(">)" "\n"
            "<sources>\n"
            "<source>");
    put_xml(out, target_.names.root());
    out.put("</source>\n"
            "</sources>\n");
}

/// Writes the classes, which lie in order of their folders.
void cobertura_writer::put_document(std::FILE* stream, std::span<const waiting_class> classes) {
    text_buffer out(stream);
    put_head(out, classes);
    out.put("<packages>\n");
    for (std::size_t first = 0, end = 0; first < classes.size(); first = end) {
        rates figures;
        for (; end < classes.size() && classes[end].folder() == classes[first].folder(); ++end)
            figures.add(classes[end].figures);
        out.put(R"(<package name=")");
        put_xml(out, classes[first].folder());
        out.put('"');
        put_rates(out, figures);
        out.put(R"( complexity="0">)" "\n"
                "<classes>\n");
        for (const waiting_class& each : classes.subspan(first, end - first))
            spool_.copy(each.offset, each.size, out);
        out.put("</classes>\n"
                "</package>\n");
    }
    out.put("</packages>\n"
            "</coverage>\n");
}

/// The classes from `from` on that go into one file; at least one.
std::span<const waiting_class> cobertura_writer::next_part(std::size_t from) const {
    std::uint64_t size = kHeadSize + kLongestEscape * target_.names.root().size();
    std::size_t end = from;
    for (; end < classes_.size(); ++end) {
        size += classes_[end].size;
        if (end == from || classes_[end].folder() != classes_[end - 1].folder())
            size += kPackageSize + kLongestEscape * classes_[end].folder().size();
        if (size > target_.options.split && end > from)
            break;
    }
    if (end == from + 1 && classes_[from].size + kHeadSize > target_.options.split)
        print_warning("%s alone takes %llu bytes, more than -split allows; give a larger size",
                      printable(classes_[from].name).c_str(), static_cast<unsigned long long>(classes_[from].size));
    return std::span<const waiting_class>(classes_).subspan(from, end - from);
}

void cobertura_writer::write_parts() {
    for (std::size_t from = 0; from < classes_.size();) {
        const std::span<const waiting_class> part = next_part(from);
        const std::size_t place = target_.files.add(part_name(target_.name, ++parts_));
        std::FILE* const stream = target_.files.check_target(place) ? target_.files.open(place) : nullptr;
        if (stream)
            put_document(stream, part);
        if (!stream || !target_.files.close(stream))
            end_with_error("%s", target_.files.error().c_str());
        from += part.size();
    }
}

void cobertura_writer::finish(const coverage_totals&) {
    std::sort(classes_.begin(), classes_.end(), [](const waiting_class& a, const waiting_class& b) {
        return std::pair(a.folder(), std::string_view(a.name)) <
               std::pair(b.folder(), std::string_view(b.name));
    });
    if (target_.options.split != 0)
        write_parts();
    else
        put_document(target_.stream, classes_);
}

void cobertura_writer::replaced() {
    if (target_.options.split != 0)
        remove_further_parts(target_.name, parts_);
}

// clang-format on

std::unique_ptr<exchange_writer> make_cobertura_writer(const writer_target& target) {
    return std::make_unique<cobertura_writer>(target);
}
