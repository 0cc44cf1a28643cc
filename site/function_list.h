// The functions of a source file, as its page lists them.
#pragma once

#include "common/text_buffer.h"
#include "site/site_model.h"

#include <span>
#include <string_view>

/// Writes list entries for the functions, which are in order of their lines. Those that begin on one line, as
/// the instances of a template do, are one entry that can be opened. `lines`: of the file.
void put_function_list(text_buffer& out, std::span<const site_function> functions, std::uint32_t lines);

/// Writes what leads to a function within the page of its file: its line, if the file has it.
void put_fragment(text_buffer& out, const site_function& function, std::uint32_t lines);

/// Class of a function, for its colour and sign: "f" never called, "u" some blocks did not run, "" complete.
std::string_view function_class(const site_function& function);
