#include "import/gcc/gcov_handler.h"

#include "common/message.h"

#include <algorithm>
#include <iterator>

namespace json = boost::json;

namespace {

constexpr std::size_t kMaximumKey = 64; ///< longest key that can mean something

struct known_key {
    gcov_place where;
    std::string_view text;
    gcov_key id;
};

constexpr known_key kKnownKeys[] = {
    {gcov_place::line, "function_name", gcov_key::function_name},
    {gcov_place::line, "line_number", gcov_key::line_number},
    {gcov_place::line, "count", gcov_key::count},
    {gcov_place::line, "unexecuted_block", gcov_key::unexecuted},
    {gcov_place::function, "name", gcov_key::name},
    {gcov_place::function, "demangled_name", gcov_key::demangled},
    {gcov_place::function, "start_line", gcov_key::start_line},
    {gcov_place::function, "start_column", gcov_key::start_column},
    {gcov_place::function, "end_line", gcov_key::end_line},
    {gcov_place::function, "end_column", gcov_key::end_column},
    {gcov_place::function, "execution_count", gcov_key::entries},
    {gcov_place::file, "file", gcov_key::file},
    {gcov_place::file, "functions", gcov_key::functions},
    {gcov_place::file, "lines", gcov_key::lines},
    {gcov_place::root, "current_working_directory", gcov_key::directory},
    {gcov_place::root, "format_version", gcov_key::version},
    {gcov_place::root, "files", gcov_key::files},
};

} // namespace

static const char* text_of(gcov_key id) {
    const auto* const found = std::find_if(std::begin(kKnownKeys), std::end(kKnownKeys),
                                           [id](const known_key& k) { return k.id == id; });
    return found == std::end(kKnownKeys) ? "" : found->text.data();
}

bool gcov_handler::fail(json::error_code& error, std::string what) {
    fault = std::move(what);
    error = json::make_error_code(json::error::syntax);
    return false;
}

bool gcov_handler::foreign(json::error_code& error) {
    return fail(error, "is not JSON of gcov (made with: gcov --json-format)");
}

/// A value that means nothing: fine under an unknown key, a fault where the outline asks for something else.
bool gcov_handler::other_value(json::error_code& error) {
    if (skip_depth_ != 0)
        return true;
    if (place_ == gcov_place::before || place_ == gcov_place::files || place_ == gcov_place::functions ||
        place_ == gcov_place::lines)
        return foreign(error);
    if (key_ != gcov_key::none)
        return fail(error, std::string("has a value of the wrong type in \"") + text_of(key_) + "\"");
    return true;
}

/// Enters an object or array that means nothing.
bool gcov_handler::skip_value(json::error_code& error) {
    if (!other_value(error))
        return false;
    ++skip_depth_;
    return true;
}

bool gcov_handler::on_document_begin(json::error_code&) {
    document_.text.clear();
    document_.directory = {};
    document_.clamped = 0;
    document_.files.clear();
    document_.functions.clear();
    document_.lines.clear();
    last_name_ = {};
    version_.clear();
    key_text_.clear();
    place_ = gcov_place::before;
    key_ = gcov_key::none;
    skip_depth_ = 0;
    files_seen_ = too_large_ = false;
    return true;
}

bool gcov_handler::on_object_begin(json::error_code& error) {
    if (skip_depth_ != 0)
        return skip_value(error);
    switch (place_) {
    case gcov_place::before:
        place_ = gcov_place::root;
        break;
    case gcov_place::files:
        place_ = gcov_place::file;
        name_seen_ = false;
        document_.files.push_back({{}, document_.functions.size(), 0, document_.lines.size(), 0});
        break;
    case gcov_place::functions:
        place_ = gcov_place::function;
        document_.functions.push_back({{}, {}, {0, 1}, {0, 1}, 0});
        break;
    case gcov_place::lines:
        place_ = gcov_place::line;
        document_.lines.emplace_back();
        break;
    default:
        return skip_value(error);
    }
    seen_ = 0;
    key_ = gcov_key::none;
    return true;
}

bool gcov_handler::end_function(json::error_code& error) {
    for (const gcov_key needed : {gcov_key::name, gcov_key::start_line, gcov_key::entries}) {
        if (!was_seen(needed))
            return fail(error, std::string("has a function without \"") + text_of(needed) + "\"");
    }
    if (!was_seen(gcov_key::demangled))
        function().demangled = function().name;
    function().end = std::max(function().end, function().start);
    place_ = gcov_place::functions;
    return true;
}

bool gcov_handler::end_line(json::error_code& error) {
    for (const gcov_key needed : {gcov_key::line_number, gcov_key::count}) {
        if (!was_seen(needed))
            return fail(error, std::string("has a line without \"") + text_of(needed) + "\"");
    }
    place_ = gcov_place::lines;
    return true;
}

bool gcov_handler::end_file(json::error_code& error) {
    if (!name_seen_)
        return fail(error, "has a source file without \"file\"");
    file().functions = document_.functions.size() - file().first_function;
    file().lines = document_.lines.size() - file().first_line;
    place_ = gcov_place::files;
    return true;
}

bool gcov_handler::end_root(json::error_code& error) {
    if (!files_seen_ || version_.empty())
        return foreign(error);
    if (version_ != "1" && version_ != "2")
        return fail(error, "has version \"" + printable(version_) +
                               "\" of gcov's format; versions 1 and 2 are known");
    place_ = gcov_place::before;
    on_document_(document_);
    return true;
}

bool gcov_handler::on_object_end(std::size_t, json::error_code& error) {
    if (skip_depth_ != 0) {
        --skip_depth_;
        return true;
    }
    key_ = gcov_key::none;
    switch (place_) {
    case gcov_place::line:
        return end_line(error);
    case gcov_place::function:
        return end_function(error);
    case gcov_place::file:
        return end_file(error);
    default:
        return end_root(error);
    }
}

bool gcov_handler::on_array_begin(json::error_code& error) {
    if (skip_depth_ != 0)
        return skip_value(error);
    if (key_ == gcov_key::files)
        place_ = gcov_place::files;
    else if (key_ == gcov_key::functions)
        place_ = gcov_place::functions;
    else if (key_ == gcov_key::lines)
        place_ = gcov_place::lines;
    else
        return skip_value(error);
    files_seen_ = true;
    key_ = gcov_key::none;
    return true;
}

bool gcov_handler::on_array_end(std::size_t, json::error_code&) {
    if (skip_depth_ != 0)
        --skip_depth_;
    else
        place_ = place_ == gcov_place::files ? gcov_place::root : gcov_place::file;
    return true;
}

bool gcov_handler::on_key_part(json::string_view part, std::size_t, json::error_code&) {
    if (skip_depth_ == 0 && key_text_.size() <= kMaximumKey)
        key_text_.append(part.data(), std::min(part.size(), kMaximumKey));
    return true;
}

bool gcov_handler::on_key(json::string_view part, std::size_t total, json::error_code& error) {
    if (skip_depth_ != 0)
        return true;
    on_key_part(part, total, error);
    key_ = gcov_key::none;
    for (const known_key& known : kKnownKeys) {
        if (known.where == place_ && known.text == key_text_)
            key_ = known.id;
    }
    key_text_.clear();
    string_begin_ = document_.text.size();
    return true;
}

bool gcov_handler::wants_string() const {
    if (skip_depth_ != 0)
        return false;
    switch (key_) {
    case gcov_key::directory:
    case gcov_key::version:
    case gcov_key::file:
    case gcov_key::name:
    case gcov_key::demangled:
    case gcov_key::function_name:
        return true;
    default:
        return false;
    }
}

bool gcov_handler::on_string_part(json::string_view part, std::size_t, json::error_code&) {
    if (wants_string())
        document_.text.append(part.data(), part.size());
    return true;
}

bool gcov_handler::on_string(json::string_view part, std::size_t total, json::error_code& error) {
    if (!wants_string())
        return other_value(error);
    on_string_part(part, total, error);
    string_done();
    return true;
}

/// GCC puts an asterisk in front of a name that the source gives to the assembler.
static text_stretch without_asterisk(text_stretch name, std::string_view text) {
    const bool has_one = name.size > 1 && text[name.begin] == '*';
    return has_one ? text_stretch{name.begin + 1, name.size - 1} : name;
}

void gcov_handler::string_done() {
    text_stretch text = {string_begin_, document_.text.size() - string_begin_};
    seen(key_);
    switch (key_) {
    case gcov_key::directory:
        document_.directory = text;
        break;
    case gcov_key::version:
        version_ = document_.view(text);
        break;
    case gcov_key::file:
        file().name = text;
        name_seen_ = true;
        break;
    case gcov_key::name:
        function().name = without_asterisk(text, document_.text);
        break;
    case gcov_key::demangled:
        function().demangled = without_asterisk(text, document_.text);
        break;
    default:
        text = without_asterisk(text, document_.text);
        if (document_.view(last_name_) == document_.view(text))
            document_.text.resize(string_begin_);
        else
            last_name_ = text;
        line().function = last_name_;
        break;
    }
}

/// A count; those that no program can reach are clamped and counted.
std::uint64_t gcov_handler::count(std::int64_t value) {
    document_.clamped += value < 0 || too_large_ ? 1 : 0;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(value, 0));
}

bool gcov_handler::place_number(std::int64_t value, std::int64_t largest, std::uint32_t* result,
                                json::error_code& error) {
    if (value < 0 || value > largest)
        return fail(error, std::string("has ") + std::to_string(value) + " in \"" + text_of(key_) +
                               "\", which cannot be");
    *result = static_cast<std::uint32_t>(value);
    return true;
}

bool gcov_handler::number(std::int64_t value, json::error_code& error) {
    if (skip_depth_ != 0)
        return true;
    seen(key_);
    switch (key_) {
    case gcov_key::line_number:
        return place_number(value, kLargestLine, &line().line, error);
    case gcov_key::count:
        line().count = count(value);
        return true;
    case gcov_key::start_line:
        return place_number(value, kLargestLine, &function().start.line, error);
    case gcov_key::start_column:
        return place_number(value, kLargestColumn, &function().start.column, error);
    case gcov_key::end_line:
        return place_number(value, kLargestLine, &function().end.line, error);
    case gcov_key::end_column:
        return place_number(value, kLargestColumn, &function().end.column, error);
    case gcov_key::entries:
        function().entries = count(value);
        return true;
    default:
        return other_value(error);
    }
}

bool gcov_handler::on_int64(std::int64_t value, json::string_view, json::error_code& error) {
    return number(value, error);
}

bool gcov_handler::on_uint64(std::uint64_t value, json::string_view, json::error_code& error) {
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    too_large_ = value > largest;
    const bool fine = number(static_cast<std::int64_t>(std::min(value, largest)), error);
    too_large_ = false;
    return fine;
}

/// Some versions write counts with an exponent; integers beyond 64 bits come here, too.
bool gcov_handler::on_double(double value, json::string_view, json::error_code& error) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    too_large_ = value >= 0x1p63;
    const std::int64_t whole = too_large_ ? largest : value < 0 ? -1 : static_cast<std::int64_t>(value);
    const bool fine = number(whole, error);
    too_large_ = false;
    return fine;
}

bool gcov_handler::on_bool(bool value, json::error_code& error) {
    if (skip_depth_ != 0 || key_ != gcov_key::unexecuted)
        return other_value(error);
    line().unexecuted = value;
    return true;
}
