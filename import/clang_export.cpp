// The export's outline, as far as it is read:
//
//   {"data":[ {"functions":[ {"name":"..","count":n,"filenames":["..",..],"regions":[[n,n,n,n,n,n,n,n],..]},
//                            .. ], .. }, .. ],
//    "type":"llvm.coverage.json.export","version":"2.0.1"}
#include "import/clang_export.h"

#include "common/message.h"
#include "common/remedy.h"

#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <cerrno>
#include <limits>
#include <string_view>

namespace json = boost::json;

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 18;
constexpr std::size_t kMaximumDepth = 64; ///< of nested objects and arrays; an export has about ten levels
constexpr std::size_t kMaximumShort = 64; ///< longest key, type or version that can mean something

constexpr const char* kExportType = "llvm.coverage.json.export";

/// Where in the outline the reader stands. Everything else is skipped by depth.
enum class place { before, root, data, item, functions, function, filenames, regions, region };

/// Keys that mean something, and only in one place.
enum class key { none, data, type, version, functions, name, count, filenames, regions };

struct known_key {
    place where;
    std::string_view text;
    key id;
};

constexpr known_key kKnownKeys[] = {
    {place::root, "data", key::data},
    {place::root, "type", key::type},
    {place::root, "version", key::version},
    {place::item, "functions", key::functions},
    {place::function, "name", key::name},
    {place::function, "count", key::count},
    {place::function, "filenames", key::filenames},
    {place::function, "regions", key::regions},
};

/// Receives the parser's events. The members that begin with on_ are what the parser calls.
class export_handler {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    export_handler(const std::string& input, const std::function<void(const export_function&)>& on_function,
                   export_function& function)
        : input_(input), on_function_(on_function), function_(function) {}

    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code&);
    bool on_object_end(std::size_t, json::error_code&);
    bool on_array_begin(json::error_code&);
    bool on_array_end(std::size_t, json::error_code&);
    bool on_key_part(json::string_view part, std::size_t, json::error_code&);
    bool on_key(json::string_view part, std::size_t, json::error_code&);
    bool on_string_part(json::string_view part, std::size_t, json::error_code&);
    bool on_string(json::string_view part, std::size_t, json::error_code&);
    bool on_number_part(json::string_view part, json::error_code&);
    bool on_int64(std::int64_t value, json::string_view, json::error_code&);
    bool on_uint64(std::uint64_t value, json::string_view, json::error_code&);
    bool on_double(double value, json::string_view part, json::error_code&);
    bool on_bool(bool, json::error_code&) { return other_value(); }
    bool on_null(json::error_code&) { return other_value(); }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

    /// Tests what can only be known when all was read.
    void check_complete() const;

  private:
    [[noreturn]] void foreign() const;
    [[noreturn]] void unexpected() const;
    bool skip_value();
    bool other_value();
    bool number(std::int64_t value);
    bool number_outside_regions(std::int64_t value);
    bool wants_string() const;
    void begin_function();
    void end_function();

    const std::string& input_;
    const std::function<void(const export_function&)>& on_function_;
    place place_ = place::before;
    key key_ = key::none;         ///< of the value that comes next in an object
    std::size_t skip_depth_ = 0;  ///< open objects and arrays that mean nothing
    bool integral_ = true;        ///< the parts of the current number hold digits and signs only
    bool functions_seen_ = false; ///< some data item had a list of functions
    std::string text_;            ///< parts of the current key or string
    std::string type_;
    std::string version_;

    export_function& function_; ///< the one being read
    bool name_seen_ = false;
    bool count_seen_ = false;
    bool filenames_seen_ = false;
    bool regions_seen_ = false;
    export_region* region_ = nullptr; ///< the one being read, the function's last
    std::size_t fields_ = 0;          ///< numbers of it so far
};

void export_handler::foreign() const {
    end_with_error("%s is not an export of llvm-cov (made with: llvm-cov export -format=text)",
                   input_.c_str());
}

void export_handler::unexpected() const {
    if (place_ < place::function)
        foreign();
    const char* where = place_ == place::filenames ? "filenames" : "regions";
    for (const known_key& known : kKnownKeys) {
        if (known.id == key_)
            where = known.text.data();
    }
    end_with_error("%s: a value in \"%s\" of function \"%s\" has the wrong type; make the export again",
                   input_.c_str(), where, printable(function_.name).c_str());
}

/// A value that means nothing: fine under an unknown key, an error where the outline asks for something else.
bool export_handler::other_value() {
    if (skip_depth_ == 0 && (place_ == place::before || place_ >= place::filenames || key_ != key::none ||
                             place_ == place::data || place_ == place::functions))
        unexpected();
    return true;
}

/// Enters an object or array that means nothing.
bool export_handler::skip_value() {
    other_value();
    ++skip_depth_;
    return true;
}

bool export_handler::on_object_begin(json::error_code&) {
    if (skip_depth_ != 0 || (place_ != place::before && place_ != place::data && place_ != place::functions))
        return skip_value();
    if (place_ == place::functions)
        begin_function();
    place_ = place_ == place::before ? place::root : place_ == place::data ? place::item : place::function;
    key_ = key::none;
    return true;
}

bool export_handler::on_object_end(std::size_t, json::error_code&) {
    if (skip_depth_ != 0) {
        --skip_depth_;
        return true;
    }
    if (place_ == place::function)
        end_function();
    place_ = place_ == place::function ? place::functions
             : place_ == place::item   ? place::data
                                       : place::before;
    return true;
}

bool export_handler::on_array_begin(json::error_code&) {
    if (skip_depth_ != 0)
        return skip_value();
    if (place_ == place::regions) {
        place_ = place::region;
        region_ = &function_.regions.emplace_back();
        fields_ = 0;
        return true;
    }
    switch (key_) {
    case key::data:
        place_ = place::data;
        break;
    case key::functions:
        place_ = place::functions;
        functions_seen_ = true;
        break;
    case key::filenames:
        place_ = place::filenames;
        filenames_seen_ = true;
        function_.filenames.clear();
        break;
    case key::regions:
        place_ = place::regions;
        regions_seen_ = true;
        function_.regions.clear();
        break;
    default:
        return skip_value();
    }
    key_ = key::none;
    return true;
}

bool export_handler::on_array_end(std::size_t, json::error_code&) {
    if (skip_depth_ != 0) {
        --skip_depth_;
        return true;
    }
    switch (place_) {
    case place::region:
        if (fields_ < kRegionFields)
            end_with_error(
                "%s: a region of function \"%s\" has %zu numbers instead of %d; make the export again",
                input_.c_str(), printable(function_.name).c_str(), fields_, static_cast<int>(kRegionFields));
        place_ = place::regions;
        break;
    case place::data:
        place_ = place::root;
        break;
    case place::functions:
        place_ = place::item;
        break;
    default:
        place_ = place::function;
        break;
    }
    return true;
}

bool export_handler::on_key_part(json::string_view part, std::size_t, json::error_code&) {
    if (skip_depth_ == 0 && text_.size() <= kMaximumShort)
        text_.append(part.data(), std::min(part.size(), kMaximumShort));
    return true;
}

bool export_handler::on_key(json::string_view part, std::size_t total, json::error_code& error) {
    if (skip_depth_ != 0)
        return true;
    on_key_part(part, total, error);
    key_ = key::none;
    for (const known_key& known : kKnownKeys) {
        if (known.where == place_ && known.text == text_)
            key_ = known.id;
    }
    text_.clear();
    return true;
}

bool export_handler::wants_string() const {
    if (skip_depth_ != 0)
        return false;
    return place_ == place::filenames || key_ == key::name || key_ == key::type || key_ == key::version;
}

bool export_handler::on_string_part(json::string_view part, std::size_t, json::error_code&) {
    if (wants_string() && (place_ != place::root || text_.size() <= kMaximumShort))
        text_.append(part.data(), part.size());
    return true;
}

bool export_handler::on_string(json::string_view part, std::size_t total, json::error_code& error) {
    if (!wants_string())
        return other_value();
    // Most come in one part, which needs no copy.
    if (!text_.empty())
        on_string_part(part, total, error);
    const std::string_view whole = text_.empty() ? std::string_view(part.data(), part.size()) : text_;
    if (place_ == place::filenames) {
        function_.filenames.add(whole);
    } else if (key_ == key::name) {
        function_.name = whole;
        name_seen_ = true;
    } else {
        (key_ == key::type ? type_ : version_) = whole;
    }
    text_.clear();
    return true;
}

bool export_handler::on_number_part(json::string_view part, json::error_code&) {
    integral_ = integral_ && part.find_first_of(".eE") == json::string_view::npos;
    return true;
}

/// Most of an export are numbers, skipped or in regions: this is short, so that it becomes part of the
/// parser.
bool export_handler::number(std::int64_t value) {
    if (skip_depth_ != 0)
        return true;
    if (place_ != place::region)
        return number_outside_regions(value);
    if (fields_ < kRegionFields)
        (*region_)[fields_] = value;
    ++fields_; // numbers that newer exports may add are ignored
    return true;
}

bool export_handler::number_outside_regions(std::int64_t value) {
    if (place_ != place::function || key_ != key::count)
        return other_value();
    function_.count = value;
    count_seen_ = true;
    return true;
}

bool export_handler::on_int64(std::int64_t value, json::string_view, json::error_code&) {
    return number(value);
}

bool export_handler::on_uint64(std::uint64_t value, json::string_view, json::error_code&) {
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    return number(static_cast<std::int64_t>(std::min(value, largest)));
}

/// Integers beyond 64 bits come here, too.
bool export_handler::on_double(double value, json::string_view part, json::error_code& error) {
    on_number_part(part, error);
    const bool integral = integral_;
    integral_ = true;
    if (!integral)
        return other_value();
    return number(value < 0 ? std::numeric_limits<std::int64_t>::min()
                            : std::numeric_limits<std::int64_t>::max());
}

void export_handler::begin_function() {
    function_.name.clear();
    function_.count = 0;
    function_.filenames.clear();
    function_.regions.clear();
    name_seen_ = count_seen_ = filenames_seen_ = regions_seen_ = false;
}

void export_handler::end_function() {
    const char* missing = !name_seen_        ? "name"
                          : !count_seen_     ? "count"
                          : !filenames_seen_ ? "filenames"
                          : !regions_seen_   ? "regions"
                                             : nullptr;
    if (missing)
        end_with_error("%s: function \"%s\" has no \"%s\"; make the export again", input_.c_str(),
                       printable(function_.name).c_str(), missing);
    on_function_(function_);
}

void export_handler::check_complete() const {
    if (type_ != kExportType)
        foreign();
    if (!version_.starts_with("2.") && !version_.starts_with("3."))
        end_with_error("%s has version \"%s\" of the export; versions 2 and 3 are known", input_.c_str(),
                       printable(version_).c_str());
    if (!functions_seen_)
        end_with_error("%s lists no functions; make the export without -summary-only", input_.c_str());
}

} // namespace

/// Bytes read; 0 at the end of the input.
static std::size_t read_piece(std::FILE* stream, char* piece, const std::string& input) {
    errno = 0;
    const std::size_t size = std::fread(piece, 1, kPieceSize, stream);
    if (std::ferror(stream))
        end_with_error("cannot read %s: %s", input.c_str(), reason_of(errno).c_str());
    return size;
}

void read_clang_export(std::FILE* stream, const std::string& input,
                       const std::function<void(const export_function&)>& on_function,
                       export_function* memory) {
    json::parse_options options;
    options.max_depth = kMaximumDepth;
    json::basic_parser<export_handler> parser(options, input, on_function, *memory);
    // Not given back after each export: merging many would scatter it over the heap.
    static char piece[kPieceSize];
    std::uint64_t done = 0;
    json::error_code error;
    for (bool more = true; more && !error;) {
        const std::size_t size = read_piece(stream, piece, input);
        more = size != 0;
        if (!more && done == 0)
            end_with_error("%s is empty; give the output of llvm-cov export -format=text", input.c_str());
        const std::size_t used = parser.write_some(more, piece, size, error);
        done += used;
        if (!error && used < size)
            error = json::make_error_code(json::error::extra_data);
    }
    if (error == json::error::incomplete)
        end_with_error("%s ends in the middle, after %llu bytes; make the export again", input.c_str(),
                       static_cast<unsigned long long>(done));
    if (error)
        end_with_error("%s is not valid JSON at byte %llu: %s; give programs, profiles, or what llvm-cov "
                       "export -format=text writes",
                       input.c_str(), static_cast<unsigned long long>(done), error.message().c_str());
    parser.handler().check_complete();
}
