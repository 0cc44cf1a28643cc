// All figures as JSON, described by docs/coverage.schema.json. Keys are in ascending order everywhere:
//
//   {"differential":BOOL,
//   "files":[
//   {"functions":[                                  for each file
//   {"blocks":N,"called":BOOL,"count":N,"covered":N,"line":N,"name":SHOWN,"symbol":SYMBOL},
//   ...],                                           in order of lines
//   "name":NAME,
//   "totals":{"blocks":COUNT,"functions":COUNT,"lines":LINES}},
//   ...],
//   "format":1,
//   "missing":[NAME,...],
//   "project":NAME,
//   "totals":{"blocks":COUNT,"files":COUNT,"functions":COUNT,"lines":LINES}}
//
// COUNT is {"covered":N,"total":N}; LINES has "partly" between the two.
#include "common/text_buffer.h"
#include "exchange/safe_text.h"
#include "exchange/writer.h"

#include <algorithm>
#include <cstring>
#include <string_view>

// A line of the output is a line here.
// clang-format off

namespace {

class json_writer : public exchange_writer {
  public:
    explicit json_writer(const writer_target& target) : options_(target.options), out_(target.stream) {
        out_.put(R"({"differential":)");
        out_.put(options_.with_reference ? "true" : "false");
        out_.put(",\n"
                 R"("files":[)" "\n");
    }

    void add(const file_coverage& file) override;
    void finish(const coverage_totals& totals) override;

  private:
    void put_function(const source_function& function);
    void put_count(std::string_view head, const covered_count& count);
    void put_lines(const coverage_figures& figures);
    template <typename Number> void put_member(std::string_view head, Number number);

    const exchange_options& options_;
    text_buffer out_;
    bool first_ = true;                             ///< no file was written
    std::vector<const source_function*> functions_; ///< of the file at hand; kept for its memory
};

} // namespace

template <typename Number> void json_writer::put_member(std::string_view head, Number number) {
    out_.put(head);
    out_.put_number(number);
}

void json_writer::put_count(std::string_view head, const covered_count& count) {
    out_.put(head);
    put_member(R"({"covered":)", count.covered);
    put_member(R"(,"total":)", count.total);
    out_.put('}');
}

void json_writer::put_lines(const coverage_figures& figures) {
    put_member(R"(,"lines":{"covered":)", figures.lines.covered);
    put_member(R"(,"partly":)", figures.partly_lines);
    put_member(R"(,"total":)", figures.lines.total);
    out_.put('}');
}

void json_writer::put_function(const source_function& function) {
    put_member(R"({"blocks":)", function.blocks);
    out_.put(function.called ? R"(,"called":true)" : R"(,"called":false)");
    put_member(R"(,"count":)", function.entry_count);
    put_member(R"(,"covered":)", function.covered);
    put_member(R"(,"line":)", function.line);
    out_.put(R"(,"name":)");
    put_json(out_, function.shown_name);
    out_.put(R"(,"symbol":)");
    put_json(out_, function.name);
    out_.put('}');
}

void json_writer::add(const file_coverage& file) {
    functions_.clear();
    for (const source_function& function : file.analysis.functions)
        functions_.push_back(&function);
    std::stable_sort(functions_.begin(), functions_.end(), [](const auto* a, const auto* b) {
        return a->line != b->line ? a->line < b->line : std::strcmp(a->name, b->name) < 0;
    });
    out_.put(first_ ? "" : ",\n");
    first_ = false;
    out_.put(R"({"functions":[)");
    for (const source_function* function : functions_) {
        out_.put(function == functions_.front() ? "\n" : ",\n");
        put_function(*function);
    }
    out_.put("],\n"
             R"("name":)");
    put_json(out_, file.name);
    put_count(",\n"
              R"("totals":{"blocks":)",
              file.figures.blocks);
    put_count(R"(,"functions":)", file.figures.functions);
    put_lines(file.figures);
    out_.put("}}");
}

void json_writer::finish(const coverage_totals& totals) {
    out_.put("],\n"
             R"("format":1,)" "\n"
             R"("missing":[)");
    for (const std::string& name : totals.missing) {
        out_.put(&name == &totals.missing.front() ? "" : ",");
        put_json(out_, name);
    }
    out_.put("],\n"
             R"("project":)");
    put_json(out_, options_.project);
    put_count(",\n"
              R"("totals":{"blocks":)",
              totals.figures.blocks);
    put_count(R"(,"files":)", totals.files);
    put_count(R"(,"functions":)", totals.figures.functions);
    put_lines(totals.figures);
    out_.put("}}\n");
    out_.flush();
}

// clang-format on

std::unique_ptr<exchange_writer> make_json_writer(const writer_target& target) {
    return std::make_unique<json_writer>(target);
}
