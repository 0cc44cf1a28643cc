// Names and other text from the profiles as each format can hold it. Bytes that are not UTF-8, and characters
// that a format cannot express, become U+FFFD.
#pragma once

#include "common/text_buffer.h"

#include <string>
#include <string_view>

/// Text and attribute values of XML 1.0.
void put_xml(text_buffer& out, std::string_view text);

/// A string of JSON, with its quotes.
void put_json(text_buffer& out, std::string_view text);

/// A cell of a Markdown table.
std::string markdown_text(std::string_view text);

/// The message of a workflow command of GitHub, and the value of one of its properties.
std::string command_message(std::string_view text);
std::string command_property(std::string_view text);

/// A line of the log of a job, or a name at its start: control characters appear as \x and two digits, and so
/// does what makes GitHub take a line for a command, "::" at its start and "##[" anywhere.
std::string log_text(std::string_view text);

/// A name on a line of its own: control characters become "?", and so does `separator` unless it is 0.
void put_line_text(text_buffer& out, std::string_view text, char separator);

/// Number of characters of a text, valid UTF-8 or not.
std::size_t character_count(std::string_view text);
