#include "run/counts.h"

#include "common/message.h"
#include "import/clang/clang_inputs.h"
#include "import/clang/elf_file.h"
#include "import/clang/file_bytes.h"
#include "import/clang/file_kind.h"
#include "import/clang/input_error.h"
#include "run/before_run.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

std::string counts_folder(const scratch_folder& scratch, compiler by) {
    return scratch.path_of(by == compiler::clang ? "clang" : "gcc");
}

std::vector<environment_change> counting_environment(const scratch_folder& scratch) {
    // Processes of one program add up in two files, so that they seldom wait for one another.
    return {{"LLVM_PROFILE_FILE", counts_folder(scratch, compiler::clang) + "/%2m.profraw"},
            {"GCOV_PREFIX", counts_folder(scratch, compiler::gcc)},
            {"GCOV_PREFIX_STRIP", ""}};
}

/// Whether there is a file that is not empty, as that of a killed process may be.
static bool has_counts(const scratch_folder& scratch, compiler by) {
    std::error_code error;
    fs::recursive_directory_iterator entry(counts_folder(scratch, by), error);
    for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
        std::error_code gone;
        if (entry->is_regular_file(gone) && entry->file_size(gone) > 0)
            return true;
    }
    return false;
}

static bool has_mapping(const std::string& path) {
    try {
        file_bytes file(path);
        const file_kind kind = kind_of(&file);
        if (kind != file_kind::program && kind != file_kind::object)
            return false;
        mapped_sections sections;
        read_mapped_sections(file_part(&file, 0, file.size()), &sections);
        return true;
    } catch (const input_error&) {
        return false;
    }
}

/// Says which file was built for coverage by one of the compilers in `by` and ends the run; comes back when
/// there is none.
static void explain_silence(const std::vector<std::string>& files, compiler by) {
    for (const std::string& path : files) {
        const bool of_gcc = by != compiler::clang && path.ends_with(".gcno");
        if (!of_gcc && (by == compiler::gcc || !has_mapping(path)))
            continue;
        end_with_error(
            "%s was built for coverage by %s, but no such program has left counts; let the command run it\n"
            "   A program leaves none when it is killed, when it ends with _exit or abort,\n   when it does "
            "not get the environment of the command, or where TMPDIR has no room",
            printable(path).c_str(), of_gcc ? "GCC" : "clang");
    }
}

static std::vector<std::string> all_files(const std::vector<std::string>& objects) {
    std::vector<std::string> files;
    for (const std::string& path : objects) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            files.push_back(path);
            continue;
        }
        const std::vector<std::string> below = files_below(path);
        files.insert(files.end(), below.begin(), below.end());
    }
    return files;
}

[[noreturn]] static void explain_no_counts(const run_options& options, const scratch_folder& scratch) {
    if (options.compiled_by == compiler::clang && has_counts(scratch, compiler::gcc))
        end_with_error("the programs have left counts of GCC and none of clang; leave out -clang");
    if (options.compiled_by == compiler::gcc && has_counts(scratch, compiler::clang))
        end_with_error("the programs have left counts of clang and none of GCC; leave out -gcc");
    explain_silence(all_files(options.objects), options.compiled_by);
    end_with_error("no program has left counts, and %s nothing was found that was built for coverage; "
                   "compile and link with\n"
                   "      clang:  -fprofile-instr-generate -fcoverage-mapping\n"
                   "      GCC:    --coverage\n"
                   "   or name with -objects the folder of what was built so",
                   options.objects.size() == 1 ? ("in " + printable(options.objects[0])).c_str()
                                               : "among the -objects");
}

compiler find_counts(const run_options& options, const scratch_folder& scratch) {
    check_objects(options);
    const bool of_clang = options.compiled_by != compiler::gcc && has_counts(scratch, compiler::clang);
    const bool of_gcc = options.compiled_by != compiler::clang && has_counts(scratch, compiler::gcc);
    if (of_clang && of_gcc)
        end_with_error(
            "programs of clang and of GCC were run; choose those of the report with -clang or -gcc");
    if (!of_clang && !of_gcc)
        explain_no_counts(options, scratch);
    return of_clang ? compiler::clang : compiler::gcc;
}
