// Annotations of GitHub, which the log of a step becomes: workflow commands, one on a line.
//
//   ::KIND file=NAME,line=N,endLine=N,title=TITLE::MESSAGE
//   ::KIND title=TITLE::MESSAGE
#pragma once

#include "changes/unified_diff.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Annotations of one kind that a step shows; others it drops without a word.
constexpr std::size_t kMostAnnotations = 10;

/// A line with its newline. `kind` is "error", "warning" or "notice"; `title` stands as it is.
std::string annotation(const char* kind, const char* title, std::string_view message);

/// The same at `lines` of `file`.
std::string annotation_at(std::string_view file, line_range lines, const char* kind, const char* title,
                          std::string_view message);
