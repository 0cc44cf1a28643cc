#include "exchange/exchange_run.h"

#include "common/message.h"
#include "exchange/exchange_options.h"
#include "exchange/writer.h"

#include <cstdio>
#include <string>
#include <unordered_set>
#include <utility>

namespace {

/// A writer and what it needs.
struct open_writer {
    std::unique_ptr<exchange_writer> writer;
    std::FILE* stream; ///< of a file, to be closed behind the writer; else null
    bool needs_root;   ///< its readers look files up below the root
};

/// The writers of a run.
class exchange {
  public:
    explicit exchange(const exchange_options& options)
        : options_(options), files_(std::vector<std::string>()), walk_(options) {}

    void run();

  private:
    open_writer open_output_of(const exchange_output& output);
    bool comes_again(const std::string& name);
    void add(const file_coverage& file);
    void check_result(const coverage_totals& totals) const;
    void close_files();

    const exchange_options& options_;
    file_replacement files_;
    coverage_walk walk_;
    std::vector<open_writer> writers_;
    std::unordered_set<std::string> names_; ///< of the files so far
    std::uint64_t outside_ = 0;             ///< files outside of the root
};

} // namespace

/// Makes the writer of each format, in the order of exchange_format.
static std::unique_ptr<exchange_writer> (*const makers[kExchangeFormats])(const writer_target&) = {
    make_cobertura_writer, make_lcov_writer,   make_sonar_writer, make_json_writer,
    make_markdown_writer,  make_github_writer, make_text_writer};

open_writer exchange::open_output_of(const exchange_output& output) {
    const exchange_format format = output.format;
    const bool in_parts = format == exchange_format::cobertura && options_.split != 0;
    std::FILE* stream = nullptr;
    if (!output.file.empty() && !in_parts) {
        const std::size_t place = files_.add(output.file);
        stream = files_.check_targets() ? files_.open(place) : nullptr;
        if (!stream)
            end_with_error("%s", files_.error().c_str());
    }
    const bool is_standard = output.file.empty();
    const writer_target target = {
        is_standard ? stdout : stream, is_standard, output.file, options_, walk_.names(), files_};
    // The names in a diff tell by themselves what they are relative to.
    const bool needs_root = format == exchange_format::cobertura || format == exchange_format::sonar ||
                            (format == exchange_format::github && options_.diff.empty());
    return {makers[static_cast<std::size_t>(format)](target), stream, needs_root};
}

/// True for a file that has the name of an earlier one, as another spelling of the path can have.
bool exchange::comes_again(const std::string& name) {
    if (names_.insert(name).second)
        return false;
    print_warning("%s comes twice in the profile, in different spellings (import it with -root)",
                  printable(name).c_str());
    return true;
}

void exchange::add(const file_coverage& file) {
    const bool again = comes_again(file.name);
    outside_ += file.below_root ? 0 : 1;
    for (const open_writer& each : writers_)
        if (!each.needs_root || (file.below_root && !again))
            each.writer->add(file);
}

void exchange::check_result(const coverage_totals& totals) const {
    if (totals.files.total == 0)
        end_with_error(
            "there is nothing to write: no source file of %s was found; run it where relative names in it "
            "lead to them",
            printable(options_.spi_file).c_str());
    bool needs_root = false;
    for (const open_writer& each : writers_)
        needs_root = needs_root || each.needs_root;
    if (!needs_root || outside_ == 0)
        return;
    const std::string root = printable(walk_.names().root());
    if (outside_ == static_cast<std::uint64_t>(totals.files.total))
        end_with_error("all source files lie outside of %s; -root names their directory", root.c_str());
    print_warning("%llu source files outside of %s were left out; -root names another directory",
                  static_cast<unsigned long long>(outside_), root.c_str());
}

void exchange::close_files() {
    bool complete = true;
    for (const open_writer& each : writers_)
        complete = complete && (!each.stream || files_.close(each.stream));
    if (!complete || !files_.replace())
        end_with_error("%s", files_.error().c_str());
}

void exchange::run() {
    for (const exchange_output& output : options_.outputs)
        writers_.push_back(open_output_of(output));
    const coverage_totals totals = walk_.run([this](const file_coverage& file) { add(file); });
    check_result(totals);
    for (const open_writer& each : writers_)
        each.writer->finish(totals);
    close_files();
}

void run_exchange(int argc, char** argv) {
    exchange_options options;
    parse_exchange_options(argc, argv, &options);
    exchange(options).run();
}
