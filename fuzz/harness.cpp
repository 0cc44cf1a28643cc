#include "fuzz/harness.h"

#include "common/fatal.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "coverage/coverage_list.h"
#include "coverage/files_of_interest.h"
#include "coverage/function_table.h"
#include "coverage/run_totals.h"
#include "driver/color_table.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "profile/dpi_file.h"
#include "profile/dpi_message.h"
#include "profile/dpi_record.h"
#include "profile/module_list.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <unistd.h>
#include <unordered_set>

namespace fs = std::filesystem;

namespace {

/// Thrown out of pgt_Exit. Not a std::exception, so that no handler of the program takes it.
struct run_ended {
    int status;
};

} // namespace

static bool running = false; ///< inside run_product

// ---- memory and streams that a process keeps to its end ----

// The linker leads the program's calls of these functions here (CMakeLists.txt). The records of the module
// list live until the process ends, and a run that ends early leaves streams open; both are released after
// each run.
static std::unordered_set<void*> kept_memory;
static std::unordered_set<std::FILE*> open_streams;

extern "C" {
void* __real__Z6zallocmPKc(std::size_t size, const char* what);
void* __wrap__Z6zallocmPKc(std::size_t size, const char* what);
char* __real__Z11copy_stringPKcS0_(const char* text, const char* what);
char* __wrap__Z11copy_stringPKcS0_(const char* text, const char* what);
std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode);
int __real_fclose(std::FILE* stream);
int __wrap_fclose(std::FILE* stream);
}

void* __wrap__Z6zallocmPKc(std::size_t size, const char* what) {
    void* memory = __real__Z6zallocmPKc(size, what);
    if (running && std::strcmp(what, "Components SPI") == 0)
        kept_memory.insert(memory);
    return memory;
}

char* __wrap__Z11copy_stringPKcS0_(const char* text, const char* what) {
    char* memory = __real__Z11copy_stringPKcS0_(text, what);
    if (running && std::strncmp(what, "comp->", 6) == 0)
        kept_memory.insert(memory);
    return memory;
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    std::FILE* stream = __real_fopen(path, mode);
    if (running && stream)
        open_streams.insert(stream);
    return stream;
}

int __wrap_fclose(std::FILE* stream) {
    open_streams.erase(stream);
    return __real_fclose(stream);
}

// ---- back to the state of a fresh process ----

filename_list_node*& head_of(coverage_list& list);

/// Access to the head of the file list, whose entries live until the process ends.
template <auto Member> struct file_list_head {
    friend filename_list_node*& head_of(coverage_list& list) { return list.*Member; }
};
template struct file_list_head<&coverage_list::fileListHead_>;

static void reset_coverage_list() {
    g_cl->vPrepareForNewSrcFile();
    for (filename_list_node* entry = head_of(*g_cl); entry;) {
        filename_list_node* next = entry->next;
        std::free(entry->name);
        std::free(entry);
        entry = next;
    }
    std::destroy_at(g_cl);
    std::construct_at(g_cl);
}

static void reset_configuration() {
    for (char** setting : {&g_lpszSPIFileName, &g_lpszDPIFileName, &g_lpszRefDPIFileName, &g_lpszProjName,
                           &g_lpszMailName, &g_lpszMailAddr, &g_lpszOutFileExt})
        release_setting(*setting);
    for (const char** setting :
         {&moduleListName, &g_lpszTextOut, &g_lpszXMLOut, &g_lpszbfullTextOut, &g_lpszbfullXMLOut})
        *setting = nullptr;
    html_output = bProgressMeter = true;
    compWithRef = g_bXCOUNTS = g_bNoPartial = Infeasible_markers_specified = false;
    g_iDemangFlag = 0;
    for (std::vector<std::string>* list :
         {&one_line_disable, &start_disable_block, &end_disable_block, &moduleName})
        list->clear();
    static const std::array<const char*, 7> colors = std::to_array(BGColor);
    std::copy(colors.begin(), colors.end(), BGColor);
}

static void reset_profiles() {
    PGOPTI_Close_Dpi_File(pgofDPIFile);
    PGOPTI_Close_Dpi_File(pgofRefDPIFile);
    pgofDPIFile = pgofRefDPIFile = nullptr;
    PGOPTI_Tool_Set_Name(nullptr);
    is_pgo_64 = false;
    componentList = first_func_line = nullptr;
    numComponents = 0;
    funcs_by_line.clear();
    for (void* memory : kept_memory)
        std::free(memory);
    kept_memory.clear();
}

static void reset_product() {
    pars = nullptr;
    outtxt = outxml = nullptr;
    close_open_outputs();
    for (std::FILE* stream : open_streams)
        __real_fclose(stream);
    open_streams.clear();
    reset_coverage_list();
    release_source();
    reset_configuration();
    reset_profiles();
    totalNumberOfFiles = totalNumberOfFilesCovered = totalNumberOfProcs = totalNumberOfProcsCovered = 0;
    totalNumberOfBlocks = totalNumberOfBlocksCovered = 0;
    functionCoverage = blockCoverage = 0.0;
}

// ---- one call ----

void require(bool holds, const char* property) {
    if (holds)
        return;
    dprintf(STDERR_FILENO, "PROPERTY DOES NOT HOLD: %s\nThe files are in %s\n", property,
            scratch_directory().c_str());
    std::abort();
}

/// A stream that collects what is written to it in a string.
static std::FILE* collecting_stream(std::string* text) {
    cookie_io_functions_t functions = {};
    functions.write = [](void* cookie, const char* bytes, std::size_t count) {
        static_cast<std::string*>(cookie)->append(bytes, count);
        return static_cast<ssize_t>(count);
    };
    std::FILE* stream = fopencookie(text, "w", functions);
    require(stream != nullptr, "a stream for the messages can be made");
    std::setvbuf(stream, nullptr, _IOFBF, 4096);
    return stream;
}

outcome run_product(const std::function<void()>& call) {
    static std::string output_text;
    static std::string errors_text;
    static std::FILE* const output = collecting_stream(&output_text);
    static std::FILE* const errors = collecting_stream(&errors_text);
    static const int home = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::FILE* const real_output = stdout;
    std::FILE* const real_errors = stderr;
    reset_configuration(); // the first call must not differ from the others
    outcome result;
    require(chdir(scratch_directory().c_str()) == 0, "the scratch directory is there");
    pgt_ExitHook = [](int status) { throw run_ended{status}; };
    stdout = output;
    stderr = errors;
    running = true;
    try {
        call();
    } catch (const run_ended& end) {
        result.ended = true;
        result.status = end.status;
    }
    reset_product();
    running = false;
    std::fflush(output);
    std::fflush(errors);
    stdout = real_output;
    stderr = real_errors;
    pgt_ExitHook = nullptr;
    require(fchdir(home) == 0, "the way back from the scratch directory");
    result.output.swap(output_text);
    result.errors.swap(errors_text);
    output_text.clear();
    errors_text.clear();
    require(!result.ended || result.status == 0 || result.status == 1, "the exit status is 0 or 1");
    require(result.status == 0 || !result.errors.empty() || !result.output.empty(),
            "exit status 1 comes with a message");
    return result;
}

// ---- files ----

static std::string scratch_name;

static void remove_scratch() {
    std::error_code ignored;
    fs::remove_all(scratch_name, ignored);
}

static std::string make_scratch() {
    for (const char* base : {"/dev/shm", "/tmp"}) {
        scratch_name = std::string(base) + "/vexcov-fuzz-XXXXXX";
        if (mkdtemp(scratch_name.data())) {
            std::atexit(remove_scratch);
            setenv("PATH", "/nonexistent", 1); // no support file of a compiler is looked for
            return scratch_name + "/";
        }
    }
    require(false, "a scratch directory can be made");
    return {};
}

const std::string& scratch_directory() {
    static const std::string name = make_scratch();
    return name;
}

void clear_scratch() {
    for (const fs::directory_entry& entry : fs::directory_iterator(scratch_directory()))
        fs::remove_all(entry.path());
}

void write_scratch(const std::string& name, std::string_view bytes) {
    const std::string path = scratch_directory() + name;
    const std::size_t slash = name.rfind('/');
    if (slash != std::string::npos)
        fs::create_directories(scratch_directory() + name.substr(0, slash));
    std::ofstream stream(path, std::ios::binary);
    stream << bytes;
    stream.close();
    require(stream.good(), "a scratch file can be written");
}

std::string read_scratch(const std::string& name) {
    std::ostringstream bytes;
    bytes << std::ifstream(scratch_directory() + name, std::ios::binary).rdbuf();
    return bytes.str();
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return result;
}

std::vector<std::string_view> split(std::string_view words, char separator) {
    std::vector<std::string_view> result;
    for (std::size_t end = words.find(separator); end != std::string_view::npos;
         end = words.find(separator)) {
        result.push_back(words.substr(0, end));
        words.remove_prefix(end + 1);
    }
    result.push_back(words);
    return result;
}

// ---- decisions ----

unsigned int byte_script::byte() {
    const std::string_view taken = take(1);
    return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]);
}

std::string_view byte_script::one_of(std::string_view words, char separator) {
    const std::vector<std::string_view> choices = split(words, separator);
    return choices[below(static_cast<unsigned int>(choices.size()))];
}

std::uint32_t byte_script::number() {
    static const std::uint32_t limits[] = {0x7fffffff, 0x80000000, 0xffffffff, 0x7ffffffe,
                                           0xffff,     0x10000,    999999,     1000000};
    const unsigned int first = byte();
    if (first < 224)
        return first;
    if (first < 232)
        return limits[first - 224];
    return (first - 232) << 8 | byte();
}

std::string_view byte_script::take(std::size_t count) {
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(taken.size());
    return taken;
}
