// Receiver of a JSON parser's events that makes a gcov_document of them. For gcov_json.cpp only.
//
// The outline of a document, as far as it is read:
//
//   {"current_working_directory":"..","format_version":"1",
//    "files":[ {"file":"..",
//               "functions":[
//               {"name":"..","demangled_name":"..","start_line":n,"start_column":n,"end_line":n,
//                              "end_column":n,"execution_count":n}, .. ],
//               "lines":[ {"function_name":"..","line_number":n,"count":n,"unexecuted_block":b}, .. ]}, .. ]}
#pragma once

#include "import/gcc/gcov_document.h"

#include <boost/json/basic_parser.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

/// Where in the outline the reader stands. Everything else is skipped by depth.
enum class gcov_place { before, root, files, file, functions, function, lines, line };

/// Keys that mean something, and only in one place.
enum class gcov_key {
    none,
    directory,
    version,
    files,
    file,
    functions,
    lines,
    name,
    demangled,
    start_line,
    start_column,
    end_line,
    end_column,
    entries,
    function_name,
    line_number,
    count,
    unexecuted,
};

/// Receives the parser's events. The members that begin with on_ are what the parser calls; each is false,
/// with an error for the parser, when the input is at fault.
class gcov_handler {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    explicit gcov_handler(std::function<void(const gcov_document&)> on_document)
        : on_document_(std::move(on_document)) {}

    bool on_document_begin(boost::json::error_code&);
    bool on_document_end(boost::json::error_code&) { return true; }
    bool on_object_begin(boost::json::error_code& error);
    bool on_object_end(std::size_t, boost::json::error_code& error);
    bool on_array_begin(boost::json::error_code& error);
    bool on_array_end(std::size_t, boost::json::error_code& error);
    bool on_key_part(boost::json::string_view part, std::size_t, boost::json::error_code& error);
    bool on_key(boost::json::string_view part, std::size_t, boost::json::error_code& error);
    bool on_string_part(boost::json::string_view part, std::size_t, boost::json::error_code& error);
    bool on_string(boost::json::string_view part, std::size_t, boost::json::error_code& error);
    bool on_number_part(boost::json::string_view, boost::json::error_code&) { return true; }
    bool on_int64(std::int64_t value, boost::json::string_view, boost::json::error_code& error);
    bool on_uint64(std::uint64_t value, boost::json::string_view, boost::json::error_code& error);
    bool on_double(double value, boost::json::string_view, boost::json::error_code& error);
    bool on_bool(bool value, boost::json::error_code& error);
    bool on_null(boost::json::error_code& error) { return other_value(error); }
    bool on_comment_part(boost::json::string_view, boost::json::error_code&) { return true; }
    bool on_comment(boost::json::string_view, boost::json::error_code&) { return true; }

    std::string fault; ///< what is wrong; empty: nothing that the parser would not know of

  private:
    bool fail(boost::json::error_code& error, std::string what);
    bool foreign(boost::json::error_code& error);
    bool other_value(boost::json::error_code& error);
    bool skip_value(boost::json::error_code& error);
    bool wants_string() const;
    void string_done();
    bool number(std::int64_t value, boost::json::error_code& error);
    std::uint64_t count(std::int64_t value);
    bool place_number(std::int64_t value, std::int64_t largest, std::uint32_t* result,
                      boost::json::error_code& error);
    bool end_function(boost::json::error_code& error);
    bool end_line(boost::json::error_code& error);
    bool end_file(boost::json::error_code& error);
    bool end_root(boost::json::error_code& error);

    /// What is open stands behind everything that is complete.
    gcov_file& file() { return document_.files.back(); }
    gcov_function& function() { return document_.functions.back(); }
    gcov_line& line() { return document_.lines.back(); }
    void seen(gcov_key id) { seen_ |= 1U << static_cast<unsigned>(id); }
    bool was_seen(gcov_key id) const { return (seen_ >> static_cast<unsigned>(id) & 1U) != 0; }

    std::function<void(const gcov_document&)> on_document_;
    gcov_document document_; ///< the one being read; kept for its memory
    gcov_place place_ = gcov_place::before;
    gcov_key key_ = gcov_key::none; ///< of the value that comes next in an object
    std::size_t skip_depth_ = 0;    ///< open objects and arrays that mean nothing
    unsigned seen_ = 0;             ///< keys of the open function or line, a bit each
    bool files_seen_ = false;
    bool name_seen_ = false;       ///< of the open file
    bool too_large_ = false;       ///< the number at hand is beyond what can be held
    std::string key_text_;         ///< parts of the current key
    std::string version_;          ///< of the format
    std::size_t string_begin_ = 0; ///< of the current string in the document's text
    text_stretch last_name_;       ///< of the last line's function; the next line often has the same
};
