// A writer of one format: takes the files of the walk one after the other. One header for all, since each is
// a single function to its caller.
#pragma once

#include "common/replace_files.h"
#include "exchange/exchange_options.h"
#include "inputs/coverage_walk.h"

#include <cstdio>
#include <memory>

class exchange_writer {
  public:
    exchange_writer() = default;
    exchange_writer(const exchange_writer&) = delete;
    exchange_writer& operator=(const exchange_writer&) = delete;
    virtual ~exchange_writer() = default;

    /// Takes a file, which is gone when it comes back.
    virtual void add(const file_coverage& file) = 0;

    /// Takes the totals behind the last file; all is with the stream then.
    virtual void finish(const coverage_totals& totals) = 0;

    /// All files of the run have their names.
    virtual void replaced() {}
};

/// Where a writer writes, and what it may ask about.
struct writer_target {
    std::FILE* stream; ///< null with -split, where the writer opens its parts in `files`
    bool terminal;     ///< the stream may be a terminal: standard output
    std::string name;  ///< of the file; empty for standard output
    const exchange_options& options;
    const root_names& names;
    file_replacement& files;
};

std::unique_ptr<exchange_writer> make_cobertura_writer(const writer_target& target);
std::unique_ptr<exchange_writer> make_lcov_writer(const writer_target& target);
std::unique_ptr<exchange_writer> make_sonar_writer(const writer_target& target);
std::unique_ptr<exchange_writer> make_json_writer(const writer_target& target);
std::unique_ptr<exchange_writer> make_markdown_writer(const writer_target& target);
std::unique_ptr<exchange_writer> make_github_writer(const writer_target& target);
std::unique_ptr<exchange_writer> make_text_writer(const writer_target& target);
