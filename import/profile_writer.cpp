// The static profile is one line for each function:
//
//   file second-name routine line blocks flag
//
// with "-" as the second name and "I" (imported) as the flag. When a name is longer than its reader expects,
// a head "V1 f s r" with the sizes of the three name buffers comes first.
#include "import/profile_writer.h"

#include "common/output_file.h"
#include "common/text_buffer.h"
#include "import/import_message.h"
#include "profile/checked_io.h"
#include "profile/dpi_format.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

constexpr std::size_t kDefaultNameSize =
    4096;                                ///< of a name buffer of the static profile's reader, NUL included
constexpr std::uint32_t kRoutines = 1;   ///< routine entries of each record
constexpr std::uint32_t kBlockSize = 16; ///< bytes of a block: its counter, its line and its column

// ---- dynamic profile ----

static void put_word(text_buffer& out, std::uint64_t value, std::uint32_t width) {
    char bytes[8];
    for (std::uint32_t i = 0; i < sizeof bytes; ++i)
        bytes[i] = static_cast<char>((value >> (8 * i)) & 0xff);
    out.put(std::string_view(bytes, width));
}

/// Bytes of the body before the positions, without the counters: routine name and entry-counter index,
/// padded.
static std::uint32_t routine_area_size() {
    const std::uint32_t width = PGOPTI_LAYOUT_64.width;
    const std::uint32_t indices = (kRoutines * 4 + width - 1) / width * width;
    return kRoutines * width + indices;
}

static std::uint64_t record_size(const profile_record& record) {
    return PGOPTI_LAYOUT_64.header_size + routine_area_size() + std::uint64_t{record.blocks} * kBlockSize;
}

/// Places in the string table, which follows the records: the file names, then the function names.
struct string_table {
    std::vector<std::uint64_t> files; ///< offset of each file's name
    std::uint64_t first_function = 0; ///< offset of the first called function's name
    std::uint32_t records = 0;        ///< number of called functions
};

static string_table lay_out_strings(const profile_data& profile) {
    string_table table;
    std::uint64_t offset = PGOPTI_HEADER_SIZE;
    for (const profile_record& record : profile.records) {
        if (!record.called)
            continue;
        if (record_size(record) > 0xffffffffU)
            import_error("function %s has too many blocks", record.name.c_str());
        offset += record_size(record);
        ++table.records;
    }
    for (const std::string& file : profile.files) {
        table.files.push_back(offset);
        offset += file.size() + 1;
    }
    table.first_function = offset;
    return table;
}

static void put_file_header(text_buffer& out, std::uint32_t runs, std::uint32_t records) {
    char header[PGOPTI_HEADER_SIZE] = {};
    const auto set = [&header](std::uint32_t offset, std::uint32_t value) {
        for (std::uint32_t i = 0; i < 4; ++i)
            header[offset + i] = static_cast<char>((value >> (8 * i)) & 0xff);
    };
    set(PGOPTI_HEADER_MAGIC, PGOPTI_DPI_MAGIC);
    set(PGOPTI_HEADER_RUNS, runs);
    set(PGOPTI_HEADER_RECORDS, records);
    out.put(std::string_view(header, sizeof header));
}

static void put_record_header(text_buffer& out, const profile_record& record, std::uint64_t file_name,
                              std::uint64_t function_name) {
    const PGOPTI_RECORD_LAYOUT& layout = PGOPTI_LAYOUT_64;
    char header[PGOPTI_LAYOUT_64.header_size] = {};
    const auto set = [&header](std::uint32_t offset, std::uint64_t value, std::uint32_t width) {
        for (std::uint32_t i = 0; i < width; ++i)
            header[offset + i] = static_cast<char>((value >> (8 * i)) & 0xff);
    };
    set(0, PGOPTI_FLAG_64 | PGOPTI_FLAG_LINES, 1);
    set(1, layout.version, 1);
    set(layout.size, record_size(record), 4);
    set(layout.routines, kRoutines, 4);
    set(layout.blocks, record.blocks, 4);
    set(layout.file_name, file_name, layout.width);
    set(layout.key_func_name, function_name, layout.width);
    out.put(std::string_view(header, sizeof header));
}

static void put_record(text_buffer& out, const profile_record& record, std::uint64_t file_name,
                       std::uint64_t function_name) {
    const std::uint32_t width = PGOPTI_LAYOUT_64.width;
    put_record_header(out, record, file_name, function_name);
    for (const profile_block& block : record.counters)
        put_word(out, block.count, width);
    put_word(out, function_name, width);
    put_word(out, 0, routine_area_size() - width); // the entry counter is the first block's
    for (const profile_block& block : record.counters) {
        put_word(out, block.position.line, 4);
        put_word(out, block.position.column, 4);
    }
}

static void put_string(text_buffer& out, const std::string& text) {
    out.put(text);
    out.put('\0');
}

static void write_dpi(std::FILE* stream, const profile_data& profile, const string_table& table,
                      std::uint32_t runs) {
    text_buffer out(stream);
    put_file_header(out, runs, table.records);
    std::uint64_t name = table.first_function;
    for (const profile_record& record : profile.records) {
        if (!record.called)
            continue;
        put_record(out, record, table.files[record.file], name);
        name += record.name.size() + 1;
    }
    for (const std::string& file : profile.files)
        put_string(out, file);
    for (const profile_record& record : profile.records) {
        if (record.called)
            put_string(out, record.name);
    }
}

// ---- static profile ----

static void put_version_head(text_buffer& out, const profile_data& profile) {
    std::size_t file_size = 0;
    std::size_t name_size = 0;
    for (const std::string& file : profile.files)
        file_size = std::max(file_size, file.size() + 1);
    for (const profile_record& record : profile.records)
        name_size = std::max(name_size, record.name.size() + 1);
    if (file_size <= kDefaultNameSize && name_size <= kDefaultNameSize)
        return;
    out.put("V1 ");
    out.put_number(std::max(file_size, kDefaultNameSize));
    out.put(' ');
    out.put_number(kDefaultNameSize);
    out.put(' ');
    out.put_number(std::max(name_size, kDefaultNameSize));
    out.put('\n');
}

static void write_spi(std::FILE* stream, const profile_data& profile) {
    text_buffer out(stream);
    put_version_head(out, profile);
    for (const profile_record& record : profile.records) {
        out.put(profile.files[record.file]);
        out.put(" - ");
        out.put(record.name);
        out.put(' ');
        out.put_number(record.line);
        out.put(' ');
        out.put_number(record.blocks);
        out.put(" I\n");
    }
}

// ---- both files, together or not at all ----

/// Temporary files that are there. They go away however the run ends, unless it is killed.
static std::vector<std::string> temporary_files;

static void remove_temporary_files() {
    for (const std::string& name : temporary_files)
        unlink(name.c_str());
    temporary_files.clear();
}

/// A name beside `target` that no other run uses, on this machine or on another one that shares the
/// directory.
static std::string temporary_name(const std::string& target) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return target + "." + std::to_string(getpid()) + "-" + std::to_string(now) + ".tmp";
}

/// The pair that is being written beside the one that it will replace.
class profile_pair {
  public:
    profile_pair(const std::string& dpi_file, const std::string& spi_file)
        : dpi_(dpi_file), spi_(spi_file), new_dpi_(temporary_name(dpi_file)),
          new_spi_(temporary_name(spi_file)) {}
    profile_pair(const profile_pair&) = delete;
    profile_pair& operator=(const profile_pair&) = delete;

    /// Tests the targets and waits until nobody reads or merges the profile that will be replaced.
    void lock();

    std::FILE* open_dpi() { return open(new_dpi_); }
    std::FILE* open_spi() { return open(new_spi_); }

    /// Brings what was written to the disk and closes the stream.
    void close(std::FILE* stream);

    /// Renames both files. When the second cannot be renamed, the first is taken back.
    void replace();

  private:
    std::FILE* open(const std::string& temporary);
    [[noreturn]] void fail(const std::string& what, int error);

    std::string dpi_;
    std::string spi_;
    std::string new_dpi_;
    std::string new_spi_;
    std::FILE* lock_ = nullptr; ///< the profile that is locked, if there is one
};

/// Removes what was written, lets go of the lock and ends the run.
void profile_pair::fail(const std::string& what, int error) {
    remove_temporary_files();
    checked_fclose(lock_);
    import_error("cannot %s: %s", what.c_str(), std::strerror(error));
}

/// Devices and directories must not be replaced.
static void check_target(const std::string& path) {
    struct stat status;
    const bool found = stat(path.c_str(), &status) == 0;
    if (!found && errno != ENOENT)
        import_error("cannot open %s for output: %s", path.c_str(), std::strerror(errno));
    if (found && !S_ISREG(status.st_mode))
        import_error("%s is not a regular file", path.c_str());
}

void profile_pair::lock() {
    check_target(dpi_);
    check_target(spi_);
    for (;;) {
        errno = 0;
        lock_ = checked_fopen(dpi_.c_str(), "r+b");
        if (!lock_ && errno == ENOENT)
            return;
        if (!lock_)
            fail("open " + dpi_ + " for output", errno);
        // Another importer may have replaced the file while this one waited; then the lock is of no use.
        struct stat locked;
        struct stat current;
        if (fstat(fileno(lock_), &locked) != 0)
            fail("examine " + dpi_, errno);
        const bool found = stat(dpi_.c_str(), &current) == 0;
        if (!found && errno != ENOENT)
            fail("examine " + dpi_, errno);
        if (found && locked.st_ino == current.st_ino && locked.st_dev == current.st_dev)
            return;
        checked_fclose(lock_);
        lock_ = nullptr;
    }
}

std::FILE* profile_pair::open(const std::string& temporary) {
    if (temporary_files.empty())
        std::atexit(remove_temporary_files);
    temporary_files.push_back(temporary);
    std::FILE* stream = open_output(temporary.c_str(), "wbx");
    if (!stream)
        fail("create " + temporary, errno);
    return stream;
}

void profile_pair::close(std::FILE* stream) {
    errno = 0;
    if (std::fflush(stream) != 0 || std::ferror(stream) || fsync(fileno(stream)) != 0)
        fail("write " + dpi_ + " and " + spi_, errno);
    close_output(stream);
}

void profile_pair::replace() {
    const std::string backup = new_dpi_ + "~";
    temporary_files.push_back(backup);
    const bool has_backup = link(dpi_.c_str(), backup.c_str()) == 0;
    const bool dpi_renamed = std::rename(new_dpi_.c_str(), dpi_.c_str()) == 0;
    if (!dpi_renamed || std::rename(new_spi_.c_str(), spi_.c_str()) != 0) {
        const int error = errno;
        if (dpi_renamed && has_backup)
            std::rename(backup.c_str(), dpi_.c_str());
        else if (dpi_renamed)
            unlink(dpi_.c_str());
        fail("replace " + dpi_ + " and " + spi_, error);
    }
    remove_temporary_files();
    checked_fclose(lock_);
}

void write_profiles(const profile_data& profile, const std::string& dpi_file, const std::string& spi_file,
                    std::uint32_t runs) {
    const string_table table = lay_out_strings(profile);
    profile_pair pair(dpi_file, spi_file);
    pair.lock();
    std::FILE* stream = pair.open_dpi();
    write_dpi(stream, profile, table, runs);
    pair.close(stream);
    stream = pair.open_spi();
    write_spi(stream, profile);
    pair.close(stream);
    pair.replace();
}
