#include "import/gcc/gcov_json.h"

#include "import/gcc/gcov_handler.h"

#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <utility>

namespace json = boost::json;

constexpr std::size_t kMaximumDepth = 64; ///< of nested objects and arrays; a document has about seven levels

static bool is_white(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

/// JSON wants such bytes escaped, and gcov writes them as they stand in names of files.
static bool is_raw_control(char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t';
}

static json::parse_options parser_options() {
    json::parse_options options;
    options.max_depth = kMaximumDepth;
    options.allow_invalid_utf8 = true;
    return options;
}

struct gcov_reader::state {
    explicit state(std::function<void(const gcov_document&)> on_document)
        : parser(parser_options(), std::move(on_document)) {}

    bool write(std::string_view text);
    bool note_fault(const json::error_code& error);

    json::basic_parser<gcov_handler> parser;
    bool open = false;      ///< a document has begun and is not complete
    bool any = false;       ///< some document has begun
    std::uint64_t done = 0; ///< bytes taken
    std::string fault;
};

bool gcov_reader::state::note_fault(const json::error_code& error) {
    const std::string& own = parser.handler().fault;
    if (!own.empty())
        fault = own;
    else if (error == json::error::incomplete)
        fault = "ends in the middle, after " + std::to_string(done) + " bytes";
    else
        fault = "is not valid JSON at byte " + std::to_string(done) + ": " + error.message();
    return false;
}

/// Parses text without raw control bytes, of any number of documents.
bool gcov_reader::state::write(std::string_view text) {
    while (!text.empty()) {
        if (!open) {
            const std::size_t white =
                static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_white) - text.begin());
            done += white;
            text.remove_prefix(white);
            if (text.empty())
                return true;
            parser.reset();
            open = any = true;
        }
        json::error_code error;
        const std::size_t used = parser.write_some(true, text.data(), text.size(), error);
        done += used;
        if (error)
            return note_fault(error);
        text.remove_prefix(used);
        open = !parser.done();
    }
    return true;
}

gcov_reader::gcov_reader(std::function<void(const gcov_document&)> on_document)
    : state_(std::make_unique<state>(std::move(on_document))) {}

gcov_reader::~gcov_reader() = default;

bool gcov_reader::feed(std::string_view piece) {
    bool any_raw = false; // without a branch, the compiler takes many bytes at a time
    for (const char c : piece)
        any_raw |= is_raw_control(c);
    while (any_raw && !piece.empty()) {
        const std::size_t clean = static_cast<std::size_t>(
            std::find_if(piece.begin(), piece.end(), is_raw_control) - piece.begin());
        if (!state_->write(piece.substr(0, clean)))
            return false;
        piece.remove_prefix(clean);
        if (piece.empty())
            break;
        static const char digits[] = "0123456789abcdef";
        const unsigned char raw = static_cast<unsigned char>(piece.front());
        const char escaped[] = {'\\', 'u', '0', '0', digits[raw >> 4], digits[raw & 15]};
        if (!state_->write(std::string_view(escaped, sizeof escaped)))
            return false;
        piece.remove_prefix(1);
    }
    return state_->write(piece);
}

bool gcov_reader::finish() {
    if (!state_->any) {
        state_->fault = "is empty";
        return false;
    }
    if (!state_->open)
        return true;
    json::error_code error;
    state_->parser.write_some(false, "", 0, error);
    return state_->note_fault(error ? error : json::make_error_code(json::error::incomplete));
}

void gcov_reader::reset() {
    state_->open = state_->any = false;
    state_->done = 0;
    state_->fault.clear();
    state_->parser.handler().fault.clear();
}

const std::string& gcov_reader::fault() const {
    return state_->fault;
}
