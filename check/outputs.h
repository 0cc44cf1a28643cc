// The forms in which vexcov-check writes its result to standard output.
#pragma once

#include "check/check_options.h"
#include "check/check_result.h"

/// Writes the result in a format.
void write_result(check_format format, const check_result& result);

/// For people, in lines:
///
///   src/one.c: 83.33% (10 of 12) of the changed lines, blocks 60.00% (3 of 5); uncovered: 41-43, 57
///   without data: src/new.c
///   FAILED: changed lines: 83.33% (10 of 12), wanted: at least 90%
///       83.33% (10 of 12)  src/one.c
///   vexcov-check: 1 floor, not held
void write_text(const check_result& result);

/// For the summary of a job or a comment: a heading and tables.
void write_markdown(const check_result& result);

/// The text, then workflow commands of GitHub: errors for floors, warnings for uncovered ranges.
void write_github(const check_result& result);

/// For programs; docs/ci.md describes it.
void write_json(const check_result& result);
