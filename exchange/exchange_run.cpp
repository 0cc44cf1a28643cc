#include "exchange/exchange_run.h"

#include "common/input_guard.h"
#include "common/message.h"
#include "common/text_buffer.h"
#include "exchange/exchange_options.h"
#include "exchange/spool.h"
#include "exchange/writer.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace {

/// A writer and what it needs.
struct open_writer {
    std::unique_ptr<spool> held_back; ///< what goes to standard output when all is well; else null
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
    void guard_inputs();
    open_writer open_output_of(const exchange_output& output);
    bool comes_again(const std::string& name);
    void add(const file_coverage& file);
    void check_root(const coverage_totals& totals) const;
    void close_files();
    void put_held_back() const;

    const exchange_options& options_;
    input_guard inputs_;
    bool guards_sources_ = false; ///< there is a file that the run could write over
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

/// Takes the inputs that the command line names, and refuses to write over them.
void exchange::guard_inputs() {
    for (const std::string* input :
         {&options_.spi_file, &options_.dpi_file, &options_.reference, &options_.components, &options_.diff})
        inputs_.add(*input);
    for (const exchange_output& output : options_.outputs) {
        inputs_.check(output.file);
        std::error_code error;
        guards_sources_ =
            guards_sources_ || options_.split != 0 || std::filesystem::exists(output.file, error);
    }
}

/// True for a format that is written file by file. A run that fails must not leave the begin of it on
/// standard output, where a reader may take it for the whole.
static bool streams(exchange_format format) {
    return format == exchange_format::lcov || format == exchange_format::sonar ||
           format == exchange_format::json;
}

open_writer exchange::open_output_of(const exchange_output& output) {
    const exchange_format format = output.format;
    const bool in_parts = format == exchange_format::cobertura && options_.split != 0;
    std::FILE* stream = nullptr;
    if (!output.file.empty() && !in_parts) {
        const std::size_t place = files_.add(output.file);
        stream = files_.check_target(place) ? files_.open(place) : nullptr;
        if (!stream)
            end_with_error("%s", files_.error().c_str());
    }
    const bool is_standard = output.file.empty();
    auto held_back = is_standard && streams(format) ? std::make_unique<spool>() : nullptr;
    std::FILE* const target_stream = held_back ? held_back->stream() : is_standard ? stdout : stream;
    const writer_target target = {target_stream, is_standard, output.file, options_, walk_.names(), files_};
    // The names in a diff tell by themselves what they are relative to.
    const bool needs_root = format == exchange_format::cobertura || format == exchange_format::sonar ||
                            (format == exchange_format::github && options_.diff.empty());
    return {std::move(held_back), makers[static_cast<std::size_t>(format)](target), stream, needs_root};
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
    if (guards_sources_)
        inputs_.add(file.analysis.path);
    const bool again = comes_again(file.name);
    outside_ += file.below_root ? 0 : 1;
    for (const open_writer& each : writers_)
        if (!each.needs_root || (file.below_root && !again))
            each.writer->add(file);
}

void exchange::check_root(const coverage_totals& totals) const {
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
    for (const std::string& target : files_.targets())
        inputs_.check(target);
    if (!complete || !files_.replace())
        end_with_error("%s", files_.error().c_str());
    for (const open_writer& each : writers_)
        each.writer->replaced();
}

void exchange::put_held_back() const {
    text_buffer out(stdout);
    for (const open_writer& each : writers_)
        if (each.held_back)
            each.held_back->copy(0, each.held_back->size(), out);
}

void exchange::run() {
    guard_inputs();
    for (const exchange_output& output : options_.outputs)
        writers_.push_back(open_output_of(output));
    const coverage_totals totals = walk_.run_any([this](const file_coverage& file) { add(file); });
    check_root(totals);
    for (const open_writer& each : writers_)
        each.writer->finish(totals);
    close_files();
    put_held_back();
}

void run_exchange(int argc, char** argv) {
    exchange_options options;
    parse_exchange_options(argc, argv, &options);
    exchange(options).run();
}
