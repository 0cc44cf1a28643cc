#include "run/run.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/remedy.h"
#include "common/source_file.h"
#include "driver/banner.h"
#include "driver/run.h"
#include "import/import_run.h"
#include "run/before_run.h"
#include "run/counts.h"
#include "run/figures.h"
#include "run/run_options.h"
#include "run/scratch_folder.h"
#include "run/signal_watch.h"
#include "run/stage.h"
#include "run/test_command.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// What the stages tell the process that started them; it lies in memory that they share.
struct stage_results {
    bool imported; ///< both profiles are written
    report_figures report;
};

/// All that a run has.
struct test_run {
    run_options options;
    signal_watch signals;
    scratch_folder scratch;
    stage_results* results;
    std::string spi_file, dpi_file; ///< absolute paths
};

} // namespace

/// Memory that child processes share; it lives as long as the process.
static stage_results* share_results() {
    void* const memory =
        mmap(nullptr, sizeof(stage_results), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        end_with_error("cannot share memory: %s", reason_of(errno).c_str()); // infeasible
    return static_cast<stage_results*>(memory);
}

static std::string absolute_path(const std::string& name) {
    std::error_code error;
    const fs::path whole = fs::absolute(name, error);
    return error ? name : whole.string();
}

/// What vexcov writes to standard error before all else.
static std::string banner_text() {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    if (!stream)
        return {}; // infeasible
    BANNER_Print(stream);
    std::fputc('\n', stream);
    std::fclose(stream);
    const std::string banner(text, size);
    std::free(text);
    return banner;
}

// ---- the command ----

/// Its status as a shell has it.
static int run_command(test_run* run) {
    char** const arguments = run->options.command;
    test_command command;
    if (const int error = command.start(arguments, counting_environment(run->scratch))) {
        print_error("cannot run %s: %s", printable(arguments[0]).c_str(), reason_of(error).c_str());
        pgt_Exit(error == ENOENT ? 127 : 126);
    }
    const int status = command.wait(&run->signals);
    if (!WIFSIGNALED(status))
        return WEXITSTATUS(status);
    print_warning("%s was ended by signal %d (%s)", printable(arguments[0]).c_str(), WTERMSIG(status),
                  strsignal(WTERMSIG(status)));
    return 128 + WTERMSIG(status);
}

// ---- the stages: each runs in a process of its own ----

static void make_folder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        end_with_error("cannot make the directory %s: %s", printable(folder).c_str(),
                       reason_of(error).c_str());
}

static void import_counts(const test_run& run) {
    const run_options& options = run.options;
    const compiler compiled_by = find_counts(options, run.scratch);
    // The counts of GCC's programs lie there under the whole names that they would have.
    for (const std::string& hidden :
         {counts_folder(run.scratch, compiler::gcc), counts_folder(run.scratch, compiler::clang) + "/",
          run.scratch.path_of("")})
        hide_in_messages(hidden);
    setenv("TMPDIR", run.scratch.path_of(".").c_str(), 1); // an import that is ended leaves nothing elsewhere
    import_options settings;
    settings.format = compiled_by == compiler::clang ? import_format::clang : import_format::gcc;
    settings.spi_file = run.spi_file;
    settings.dpi_file = run.dpi_file;
    settings.root = options.root;
    settings.inputs = {counts_folder(run.scratch, compiled_by)};
    settings.objects = options.objects;
    settings.all_sources = options.all_sources;
    settings.gcov = options.gcov;
    if (options.keep)
        make_folder(options.folder);
    import_profiles(settings);
    run.results->imported = true;
}

/// Calls vexcov with these options and the profiles, in the folder of the report.
static void call_vexcov(const test_run& run, std::vector<std::string> arguments) {
    make_folder(run.options.folder);
    if (chdir(run.options.folder.c_str()) != 0)
        end_with_error("cannot enter the directory %s: %s", printable(run.options.folder).c_str(),
                       reason_of(errno).c_str());
    run_sources().set_folder(run.options.root);
    arguments.insert(arguments.begin(), "vexcov-run");
    arguments.insert(arguments.end(), {"-nopmeter", "-spi", run.spi_file, "-dpi", run.dpi_file});
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    run_report(static_cast<int>(arguments.size()), argv.data());
}

// ---- all together ----

/// Makes the profiles of what was counted. False when there are none.
static bool import_in_stage(test_run* run, bool* complete) {
    const int status = run_stage(
        "the import", "", [run] { import_counts(*run); }, &run->signals);
    *complete = *complete && status == 0;
    return run->results->imported;
}

static bool report_in_stages(test_run* run, bool* complete) {
    const std::string banner = banner_text();
    const auto write_report = [run] {
        call_vexcov(*run, run->options.for_report);
        run->results->report = figures_of_report();
    };
    *complete = run_stage("the report", banner, write_report, &run->signals) == 0 && *complete;
    const auto write_functions = [run] { call_vexcov(*run, run->options.for_functions); };
    if (run->options.function_exports)
        *complete =
            run_stage("the function export", banner, write_functions, &run->signals) == 0 && *complete;
    return run->results->report.made;
}

/// Makes the report and prints its figures. False when a part of it is missing, which was said.
static bool make_report(test_run* run) {
    bool complete = true;
    if (!import_in_stage(run, &complete) || !report_in_stages(run, &complete))
        return false;
    print_figures(stdout, run->results->report);
    const fs::path page = fs::path(run->options.folder) / "CODE_COVERAGE.HTML";
    std::printf("Report: %s\n", printable(page.lexically_normal().string()).c_str());
    return complete;
}

void run_tests(int argc, char** argv) {
    run_options options;
    parse_run_options(argc, argv, &options);
    check_before_run(options);
    test_run run = {options, {}, {}, share_results(), {}, {}};
    run.spi_file = options.keep ? absolute_path(options.spi_file) : run.scratch.path_of("pgopti.spi");
    run.dpi_file = options.keep ? absolute_path(options.dpi_file) : run.scratch.path_of("pgopti.dpi");
    const int status = run_command(&run);
    const bool reported = make_report(&run);
    pgt_Exit(status != 0 ? status : reported ? 0 : 1);
}
