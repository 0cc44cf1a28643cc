#include "bench/tree.h"

#include "bench/tree_function.h"
#include "profile/dpi_format.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <utility>
#include <vector>

[[noreturn]] static void fail(const std::string& what) {
    std::fprintf(stderr, "tree: %s\n", what.c_str());
    std::exit(1);
}

static std::FILE* open_file(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        fail("cannot create " + path);
    return file;
}

static void write_all(std::FILE* file, std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
        fail("cannot write");
}

static void close_file(std::FILE* file) {
    if (std::fclose(file) != 0)
        fail("cannot write");
}

static void make_folder(const std::string& path) {
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST)
        fail("cannot create " + path);
}

static void store(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; i++)
        bytes[at + i] = static_cast<char>(value >> (8 * i) & 0xff);
}

/// Size of a record with one routine: header, counters, name offset, padded entry index, positions.
static std::uint64_t record_size(std::uint64_t blocks) {
    return PGOPTI_LAYOUT_64.header_size + 8 * blocks + 8 + 8 + 8 * blocks;
}

/// The dynamic profile while it is written: the records go out at once, the strings behind all of them.
class profile_writer {
  public:
    profile_writer(const std::string& path, std::uint64_t records, std::uint64_t records_size)
        : file_(open_file(path)), strings_start_(PGOPTI_HEADER_SIZE + records_size) {
        std::string header(PGOPTI_HEADER_SIZE, '\0');
        store(header, PGOPTI_HEADER_MAGIC, PGOPTI_DPI_MAGIC, 4);
        store(header, PGOPTI_HEADER_RUNS, 1, 4);
        store(header, PGOPTI_HEADER_RECORDS, records, 4);
        write_all(file_, header);
    }

    /// Adds a string; returns its offset in the file.
    std::uint64_t add_string(const std::string& text) {
        const std::uint64_t offset = strings_start_ + strings_.size();
        strings_.append(text.c_str(), text.size() + 1);
        return offset;
    }

    void add_record(std::uint64_t file_name, const function_facts& facts) {
        add_record(file_name, add_string(facts.name), facts);
    }

    void add_record(std::uint64_t file_name, std::uint64_t name, const function_facts& facts) {
        const PGOPTI_RECORD_LAYOUT& layout = PGOPTI_LAYOUT_64;
        const std::uint64_t blocks = facts.counts.size();
        record_.assign(record_size(blocks), '\0');
        store(record_, 0, PGOPTI_FLAG_64 | PGOPTI_FLAG_LINES, 1);
        store(record_, 1, layout.version, 1);
        store(record_, layout.size, record_.size(), 4);
        store(record_, layout.routines, 1, 4);
        store(record_, layout.blocks, blocks, 4);
        store(record_, layout.file_name, file_name, 8);
        store(record_, layout.key_func_name, name, 8);
        std::size_t at = layout.header_size;
        for (const std::uint64_t count : facts.counts) {
            store(record_, at, count, 8);
            at += 8;
        }
        store(record_, at, name, 8);
        at += 16;
        for (const position& block : facts.blocks) {
            store(record_, at, block.line, 4);
            store(record_, at + 4, block.column, 4);
            at += 8;
        }
        write_all(file_, record_);
    }

    void finish() {
        write_all(file_, strings_);
        close_file(file_);
    }

  private:
    std::FILE* file_;
    std::uint64_t strings_start_;
    std::string strings_;
    std::string record_;
};

static void write_source(const std::string& path, const std::string& text) {
    std::FILE* file = open_file(path);
    write_all(file, text);
    close_file(file);
}

/// Adds functions, ascending by name, to a dynamic profile; those of one name get one record.
static void add_records(profile_writer& dpi, const char* file, const std::vector<function_facts>& functions) {
    const std::uint64_t file_name = dpi.add_string(file);
    const std::string* last = nullptr;
    for (const function_facts& facts : functions) {
        if (last == nullptr || facts.name != *last)
            dpi.add_record(file_name, facts);
        last = &facts.name;
    }
}

static void write_spi(std::FILE* spi, const char* file, const std::vector<function_facts>& functions) {
    for (const function_facts& facts : functions)
        std::fprintf(spi, "%s %s %s %u %zu F\n", file, file, facts.name.c_str(), facts.line,
                     facts.counts.size());
}

/// Files of one folder begin with the one that lies deepest.
static std::string source_name(const tree_sizes& sizes, std::uint64_t index) {
    char text[64];
    std::snprintf(text, sizeof text, "src/%02" PRIu64 "/", index % sizes.folders);
    std::string name = text;
    for (std::uint64_t i = sizes.depth - 1 - index / sizes.folders % sizes.depth; i > 0; i--)
        name += "d/";
    std::snprintf(text, sizeof text, "file_%07" PRIu64 ".c", index);
    return name + text;
}

/// Makes the folders below `folder` that a file lies in. Mostly they are there.
static void make_folders(const std::string& folder, const std::string& name) {
    const std::string innermost = folder + "/" + name.substr(0, name.rfind('/'));
    if (mkdir(innermost.c_str(), 0777) == 0 || errno == EEXIST)
        return;
    for (std::size_t slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1))
        make_folder(folder + "/" + name.substr(0, slash));
}

/// Writes source file `index` and adds its functions to the profiles; `reference` may be null.
static void write_module(const std::string& folder, const tree_sizes& sizes, std::uint64_t index,
                         std::FILE* spi, profile_writer& dpi, profile_writer* reference) {
    const std::string path = source_name(sizes, index);
    make_folders(folder, path);
    const char* const name = path.c_str();
    sequence numbers(index);
    std::string text;
    std::vector<function_facts> functions;
    std::uint32_t line = 1;
    for (std::uint64_t i = 0; i < sizes.functions; i++) {
        functions.push_back(append_function(text, sizes, i, line, numbers));
        line += static_cast<std::uint32_t>(sizes.lines);
    }
    write_source(folder + "/" + name, text);
    if (sizes.order != 0)
        write_spi(spi, name, functions);
    std::stable_sort(functions.begin(), functions.end(),
                     [](const function_facts& a, const function_facts& b) { return a.name < b.name; });
    if (sizes.order == 0)
        write_spi(spi, name, functions);
    add_records(dpi, name, functions);
    if (reference == nullptr)
        return;
    for (function_facts& facts : functions)
        facts.counts = block_counts(sizes, numbers);
    add_records(*reference, name, functions);
}

/// Files in the order of their names, which is the order of the records.
static std::vector<std::uint64_t> files_by_name(const tree_sizes& sizes) {
    std::vector<std::pair<std::string, std::uint64_t>> names;
    for (std::uint64_t i = 0; i < sizes.files; i++)
        names.emplace_back(source_name(sizes, i), i);
    std::sort(names.begin(), names.end());
    std::vector<std::uint64_t> order;
    for (const auto& [name, index] : names)
        order.push_back(index);
    return order;
}

static void write_extra_records(const tree_sizes& sizes, profile_writer& dpi) {
    if (sizes.extra == 0)
        return;
    const std::uint64_t file_name = dpi.add_string("unlisted" + std::string(sizes.shared_file, 'u') + ".c");
    const std::uint64_t shared =
        sizes.shared_function == 0 ? 0 : dpi.add_string(std::string(sizes.shared_function, 'u'));
    for (std::uint64_t i = 0; i < sizes.extra; i++) {
        char name[64];
        std::snprintf(name, sizeof name, "unlisted_%09" PRIu64, i);
        dpi.add_record(file_name, shared != 0 ? shared : dpi.add_string(name), {name, 1, {{1, 1}}, {i + 1}});
    }
}

static void write_components(const std::string& path, const tree_sizes& sizes) {
    std::FILE* file = open_file(path);
    for (std::uint64_t i = 1; i < sizes.patterns; i++)
        std::fprintf(file, "%smodule_%07" PRIu64 "/private\n", i % 4 == 0 ? "~" : "", i);
    std::fputs("src/\n", file);
    close_file(file);
}

/// An empty dynamic profile, ready for all functions of the tree.
static std::unique_ptr<profile_writer> open_profile(const std::string& path, const tree_sizes& sizes,
                                                    std::uint64_t extra) {
    const std::uint64_t functions = sizes.files * (sizes.one_name != 0 ? 1 : sizes.functions);
    return std::make_unique<profile_writer>(path, functions + extra,
                                            functions * record_size(sizes.blocks) + extra * record_size(1));
}

void write_tree(const std::string& folder, const tree_sizes& sizes) {
    make_folder(folder);
    const auto dpi = open_profile(folder + "/pgopti.dpi", sizes, sizes.extra);
    std::unique_ptr<profile_writer> reference;
    if (sizes.reference != 0)
        reference = open_profile(folder + "/reference.dpi", sizes, 0);
    std::FILE* spi = open_file(folder + "/pgopti.spi");
    for (const std::uint64_t index : files_by_name(sizes))
        write_module(folder, sizes, index, spi, *dpi, reference.get());
    close_file(spi);
    write_extra_records(sizes, *dpi);
    dpi->finish();
    if (reference)
        reference->finish();
    if (sizes.patterns != 0)
        write_components(folder + "/components.txt", sizes);
}
