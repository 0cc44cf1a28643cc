// The outline, as far as it is read; everything else is passed over:
//
//   {"differential":bool,"files":[{"name":"..","totals":{"blocks":{"covered":n,"total":n},..}},..],"format":1,
//    "totals":{"blocks":{"covered":n,"total":n},"files":{..},"functions":{..},"lines":{..}}}
#include "check/baseline.h"

#include "common/file_ptr.h"
#include "common/message.h"
#include "common/remedy.h"

#include <boost/json/basic_parser_impl.hpp>
#include <cerrno>
#include <cstdio>
#include <limits>

namespace json = boost::json;

namespace {

constexpr std::size_t kMaximumDepth = 64;   ///< of nested objects and arrays; the outline has six levels
constexpr std::size_t kLongestKey = 64;     ///< longer ones mean nothing
constexpr std::size_t kLongestName = 65536; ///< of a file

/// Receives the parser's events. The members that begin with on_ are what the parser calls.
class baseline_handler {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code&) { return begin(false); }
    bool on_object_end(std::size_t, json::error_code&) { return end(); }
    bool on_array_begin(json::error_code&) { return begin(true); }
    bool on_array_end(std::size_t, json::error_code&) { return end(); }
    bool on_key_part(json::string_view part, std::size_t, json::error_code&);
    bool on_key(json::string_view part, std::size_t total, json::error_code& error);
    bool on_string_part(json::string_view part, std::size_t, json::error_code&);
    bool on_string(json::string_view part, std::size_t total, json::error_code& error);
    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(std::int64_t value, json::string_view, json::error_code&) { return number(value); }
    bool on_uint64(std::uint64_t, json::string_view, json::error_code&) { return number(-1); }
    bool on_double(double, json::string_view, json::error_code&) { return number(-1); }
    bool on_bool(bool value, json::error_code&);
    bool on_null(json::error_code&) { return true; }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

    std::string fault; ///< what is wrong, to follow the name of the input
    baseline result;
    std::int64_t format = 0;
    int totals_seen = 0; ///< numbers of the totals

  private:
    bool begin(bool is_array);
    bool end();
    bool number(std::int64_t value);
    bool wants_name() const { return skipped_ == 0 && path_ == "/files/*" && key_ == "name"; }
    std::int64_t* place_of_number();

    struct level {
        std::size_t path; ///< length of the path outside of it
        bool is_array;
    };
    std::vector<level> levels_;
    std::string path_;        ///< of the open object or array: "/files/*/totals"; elements of arrays are "*"
    std::string key_;         ///< of the value that comes next
    std::string text_;        ///< parts of the key or string at hand
    std::size_t skipped_ = 0; ///< open objects and arrays of no interest
};

bool baseline_handler::begin(bool is_array) {
    if (levels_.empty() && is_array) {
        fault = " is no JSON of vexcov-export (made with: vexcov-export json)";
        return false;
    }
    // What the functions hold is most of the file.
    if (skipped_ != 0 || (path_ == "/files/*" && key_ == "functions")) {
        ++skipped_;
        return true;
    }
    levels_.push_back({path_.size(), is_array});
    if (levels_.size() > 1)
        path_.append(1, '/').append(key_);
    key_.assign(is_array ? 1 : 0, '*');
    if (path_ == "/files/*")
        result.files.emplace_back();
    return true;
}

bool baseline_handler::end() {
    if (skipped_ != 0) {
        --skipped_;
        return true;
    }
    if (path_ == "/files/*" && result.files.back().name.empty()) {
        fault = " holds a file without a name";
        return false;
    }
    path_.resize(levels_.back().path);
    levels_.pop_back();
    if (!levels_.empty())
        key_.assign(levels_.back().is_array ? 1 : 0, '*');
    return true;
}

bool baseline_handler::on_key_part(json::string_view part, std::size_t, json::error_code&) {
    if (skipped_ == 0 && text_.size() <= kLongestKey)
        text_.append(part.data(), std::min(part.size(), kLongestKey));
    return true;
}

bool baseline_handler::on_key(json::string_view part, std::size_t total, json::error_code& error) {
    on_key_part(part, total, error);
    if (skipped_ == 0)
        key_.swap(text_);
    text_.clear();
    return true;
}

bool baseline_handler::on_string_part(json::string_view part, std::size_t, json::error_code&) {
    if (wants_name() && text_.size() <= kLongestName)
        text_.append(part.data(), std::min(part.size(), kLongestName));
    return true;
}

bool baseline_handler::on_string(json::string_view part, std::size_t total, json::error_code& error) {
    on_string_part(part, total, error);
    if (wants_name())
        result.files.back().name.swap(text_);
    text_.clear();
    return true;
}

/// The figure that a number at the current place is; null for none.
std::int64_t* baseline_handler::place_of_number() {
    const std::string_view path = path_;
    const bool of_file = path.starts_with("/files/*/totals/");
    if (!of_file && !path.starts_with("/totals/"))
        return nullptr;
    const auto member_of = [this](covered_count& count) {
        return key_ == "covered" ? &count.covered : key_ == "total" ? &count.total : nullptr;
    };
    if (path == "/totals/files")
        return member_of(result.files_counted);
    coverage_figures& figures = of_file ? result.files.back().figures : result.totals;
    const std::optional<metric> what = metric_of(path.substr(path.rfind('/') + 1));
    std::int64_t* const place = what ? member_of(count_of(figures, *what)) : nullptr;
    totals_seen += place && !of_file ? 1 : 0;
    return place;
}

bool baseline_handler::number(std::int64_t value) {
    if (skipped_ != 0)
        return true;
    std::int64_t* const place = path_.empty() && key_ == "format" ? &format : place_of_number();
    if (!place)
        return true;
    *place = value;
    if (value < 0)
        fault = " holds a figure that cannot be, in " + path_ + "/" + key_;
    return value >= 0;
}

bool baseline_handler::on_bool(bool value, json::error_code&) {
    if (path_.empty() && key_ == "differential")
        result.differential = value;
    return true;
}

} // namespace

/// Blocks are not compared: of a function with some that no test can reach the report, too, may count more of
/// them as covered than there are.
static bool is_too_much(const covered_count& count, metric what) {
    return what != metric::blocks && count.covered > count.total;
}

/// What is wrong with the figures; empty for nothing.
static std::string fault_of_figures(const baseline& before) {
    for (const metric what : kMetrics) {
        const covered_count& all = count_of(before.totals, what);
        bool too_much = is_too_much(all, what);
        std::uint64_t total = 0; // hostile figures may go round
        std::uint64_t covered = 0;
        for (const checked_file& file : before.files) {
            const covered_count& count = count_of(file.figures, what);
            too_much = too_much || is_too_much(count, what);
            total += static_cast<std::uint64_t>(count.total);
            covered += static_cast<std::uint64_t>(count.covered);
        }
        if (too_much)
            return " is damaged: it has more " + std::string(name_of(what)) + " covered than there are";
        if (total != static_cast<std::uint64_t>(all.total) ||
            covered != static_cast<std::uint64_t>(all.covered))
            return " is damaged: its files do not add up to its total of " + std::string(name_of(what));
    }
    return "";
}

/// What is wrong with a parsed file; empty for nothing.
static std::string fault_of(const baseline_handler& handler) {
    constexpr int kFigures = 6; // two of each metric
    if (handler.format != 1)
        return " is no JSON of vexcov-export, format 1 (made with: vexcov-export json)";
    if (handler.totals_seen != kFigures)
        return " does not hold the totals of blocks, lines and functions; make it again";
    return fault_of_figures(handler.result);
}

constexpr const char* kAgain = "make it again with vexcov-export json";

baseline read_baseline(const std::string& name) {
    const std::string shown = printable(name);
    const file_ptr stream(std::fopen(name.c_str(), "rb"));
    if (!stream)
        end_with_error("cannot open %s: %s", shown.c_str(), reason_of(errno).c_str());
    json::parse_options options;
    options.max_depth = kMaximumDepth;
    json::basic_parser<baseline_handler> parser(options);
    constexpr std::size_t kPieceSize = std::size_t{1} << 16;
    std::vector<char> piece(kPieceSize);
    std::uint64_t done = 0;
    json::error_code error;
    for (bool more = true; more && !error;) {
        errno = 0;
        const std::size_t size = std::fread(piece.data(), 1, kPieceSize, stream.get());
        if (std::ferror(stream.get()))
            end_with_error("cannot read %s: %s", shown.c_str(), reason_of(errno).c_str());
        more = size != 0;
        const std::size_t used = parser.write_some(more, piece.data(), size, error);
        done += used;
        if (!error && used < size)
            error = json::make_error_code(json::error::extra_data);
    }
    baseline_handler& handler = parser.handler();
    if (!handler.fault.empty())
        end_with_error("%s%s", shown.c_str(), with_remedy(printable(handler.fault), kAgain).c_str());
    if (error)
        end_with_error("%s is not valid JSON at byte %llu: %s; make it again with vexcov-export json",
                       shown.c_str(), static_cast<unsigned long long>(done), error.message().c_str());
    const std::string fault = fault_of(handler);
    if (!fault.empty())
        end_with_error("%s%s", shown.c_str(), with_remedy(fault, kAgain).c_str());
    return std::move(handler.result);
}
