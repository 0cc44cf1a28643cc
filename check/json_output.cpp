// Keys are in ascending order everywhere:
//
//   {"baseline":BASELINE|null,"changes":CHANGES|null,"floors":[FLOOR,...],"format":1,"held":BOOL,
//    "max_uncovered":{"found":N,"held":BOOL,"most":N}|null,"missing":N}
//   FLOOR     {"count":COUNT,"each_file":BOOL,"files":[FILE,...],"held":BOOL,"least":PERCENT,"metric":NAME,
//              "pattern":PATTERN|null}
//   FILE      {"count":COUNT,"name":NAME}
//   BASELINE  {"file":NAME,"tolerance":PERCENT,"totals":[{"before":COUNT,"fallen":[{"before":COUNT,
//              "name":NAME,"now":COUNT},...],"held":BOOL,"metric":NAME,"now":COUNT},...]}
//   CHANGES   {"blocks":COUNT,"directory":NAME|null,"files":[{"blocks":COUNT,"lines":COUNT,"name":NAME,
//              "new_blocks":N|null,"new_lines":RANGES,"source":NAME,"uncovered":RANGES},...],"lines":COUNT,
//              "without_data":[NAME,...]}
//   COUNT     {"covered":N,"percent":PERCENT|null,"total":N}
//   RANGES    [[FIRST,LAST],...]
//   PERCENT   a text such as "87.41"
#include "check/outputs.h"
#include "common/text_buffer.h"
#include "exchange/safe_text.h"

#include <algorithm>

namespace {

class json_writer {
  public:
    explicit json_writer(const check_result& result) : result_(result), out_(stdout) {}

    void write();

  private:
    template <typename Items, typename Put> void put_list(const Items& items, Put put);
    void put_bool(bool value) { out_.put(value ? "true" : "false"); }
    void put_count(std::string_view head, const covered_count& count);
    void put_ranges(std::string_view head, const std::vector<line_range>& ranges);
    void put_floor(const floor_result& floor);
    void put_total(const baseline_total& total);
    void put_baseline(const baseline_result& baseline);
    void put_changed_file(const changed_file_coverage& file);
    void put_changes(const changed_coverage& changed);
    void put_most_uncovered();

    const check_result& result_;
    text_buffer out_;
};

} // namespace

/// A list, with an item a line.
template <typename Items, typename Put> void json_writer::put_list(const Items& items, Put put) {
    out_.put('[');
    bool first = true;
    for (const auto& item : items) {
        out_.put(first ? "\n" : ",\n");
        first = false;
        put(item);
    }
    out_.put(']');
}

void json_writer::put_count(std::string_view head, const covered_count& count) {
    out_.put(head);
    out_.put(R"({"covered":)");
    out_.put_number(count.covered);
    out_.put(R"(,"percent":)");
    std::string percent = shown_part(count);
    percent.pop_back();
    out_.put(percent.empty() ? "null" : "\"" + percent + "\"");
    out_.put(R"(,"total":)");
    out_.put_number(count.total);
    out_.put('}');
}

void json_writer::put_ranges(std::string_view head, const std::vector<line_range>& ranges) {
    out_.put(head);
    out_.put('[');
    for (const line_range& range : ranges) {
        out_.put(&range == ranges.data() ? "[" : ",[");
        out_.put_number(range.first);
        out_.put(',');
        out_.put_number(range.last);
        out_.put(']');
    }
    out_.put(']');
}

void json_writer::put_floor(const floor_result& floor) {
    put_count(R"({"count":)", floor.count);
    out_.put(R"(,"each_file":)");
    put_bool(floor.floor->each_file);
    out_.put(R"(,"files":)");
    put_list(floor.below, [this](const file_count& file) {
        put_count(R"({"count":)", file.count);
        out_.put(R"(,"name":)");
        put_json(out_, file.name);
        out_.put('}');
    });
    out_.put(R"(,"held":)");
    put_bool(floor.held);
    out_.put(R"(,"least":")");
    out_.put(floor.floor->least.text);
    out_.put(R"(","metric":")");
    out_.put(name_of(floor.floor->what));
    out_.put(R"(","pattern":)");
    if (floor.floor->pattern.empty())
        out_.put("null");
    else
        put_json(out_, floor.floor->pattern);
    out_.put('}');
}

void json_writer::put_total(const baseline_total& total) {
    put_count(R"({"before":)", total.before);
    out_.put(R"(,"fallen":)");
    put_list(total.fallen, [this](const fallen_file& file) {
        put_count(R"({"before":)", file.before);
        out_.put(R"(,"name":)");
        put_json(out_, file.name);
        put_count(R"(,"now":)", file.now);
        out_.put('}');
    });
    out_.put(R"(,"held":)");
    put_bool(total.held);
    out_.put(R"(,"metric":")");
    out_.put(name_of(total.what));
    put_count(R"(","now":)", total.now);
    out_.put('}');
}

void json_writer::put_baseline(const baseline_result& baseline) {
    out_.put(R"({"file":)");
    put_json(out_, baseline.name);
    out_.put(R"(,"tolerance":")");
    out_.put(baseline.tolerance.text);
    out_.put(R"(","totals":)");
    put_list(baseline.totals, [this](const baseline_total& total) { put_total(total); });
    out_.put('}');
}

void json_writer::put_changed_file(const changed_file_coverage& file) {
    put_count(R"({"blocks":)", file.blocks);
    put_count(R"(,"lines":)", file.lines);
    out_.put(R"(,"name":)");
    put_json(out_, file.name);
    out_.put(R"(,"new_blocks":)");
    if (result_.differential)
        out_.put_number(file.new_blocks);
    else
        out_.put("null");
    put_ranges(R"(,"new_lines":)", file.new_lines);
    out_.put(R"(,"source":)");
    put_json(out_, file.source);
    put_ranges(R"(,"uncovered":)", file.uncovered);
    out_.put('}');
}

void json_writer::put_changes(const changed_coverage& changed) {
    put_count(R"({"blocks":)", result_.figures.blocks);
    out_.put(R"(,"directory":)");
    if (changed.is_root)
        out_.put("null");
    else
        put_json(out_, changed.directory);
    out_.put(R"(,"files":)");
    put_list(changed.files, [this](const changed_file_coverage& file) { put_changed_file(file); });
    put_count(R"(,"lines":)", result_.figures.lines);
    out_.put(R"(,"without_data":)");
    put_list(changed.without_data, [this](const std::string& name) { put_json(out_, name); });
    out_.put('}');
}

void json_writer::put_most_uncovered() {
    if (!result_.most_uncovered)
        return out_.put("null");
    const std::int64_t found = uncovered_of(result_.figures.lines);
    out_.put(R"({"found":)");
    out_.put_number(found);
    out_.put(R"(,"held":)");
    put_bool(found <= *result_.most_uncovered);
    out_.put(R"(,"most":)");
    out_.put_number(*result_.most_uncovered);
    out_.put('}');
}

void json_writer::write() {
    out_.put(R"({"baseline":)");
    if (result_.baseline)
        put_baseline(*result_.baseline);
    else
        out_.put("null");
    out_.put(",\n"
             R"("changes":)");
    if (result_.changed)
        put_changes(*result_.changed);
    else
        out_.put("null");
    out_.put(",\n"
             R"("floors":)");
    put_list(result_.floors, [this](const floor_result& floor) { put_floor(floor); });
    out_.put(",\n"
             R"("format":1,)"
             "\n"
             R"("held":)");
    put_bool(all_held(verdicts_of(result_)));
    out_.put(",\n"
             R"("max_uncovered":)");
    put_most_uncovered();
    out_.put(",\n"
             R"("missing":)");
    out_.put_number(result_.missing);
    out_.put("}\n");
}

void write_json(const check_result& result) {
    json_writer(result).write();
}
