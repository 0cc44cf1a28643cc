#include "import/clang/elf_file.h"

#include "import/clang/byte_reader.h"
#include "import/clang/inflate.h"

#include <vector>

namespace {

/// Offsets within the headers, as the header of this file draws them.
struct elf_layout {
    std::size_t file_header;
    std::size_t sections_offset;
    std::size_t section_size;
    std::size_t section_number;
    std::size_t section_of_names;
    std::size_t section_header;
    std::size_t offset;
    std::size_t size;
    std::size_t link;
    std::size_t packed_size;
    std::size_t packed_stream;
    bool wide; ///< offsets, sizes and flags take 8 bytes
};

constexpr elf_layout kLayout64 = {64, 40, 58, 60, 62, 64, 24, 32, 40, 8, 24, true};
constexpr elf_layout kLayout32 = {52, 32, 46, 48, 50, 40, 16, 20, 24, 4, 12, false};

constexpr std::uint32_t kNote = 7;
constexpr std::uint32_t kNoBytes = 8;
constexpr std::uint64_t kCompressed = 0x800;
constexpr std::uint16_t kNamesElsewhere = 0xffff;
constexpr std::uint32_t kBuildIdNote = 3;
constexpr std::uint64_t kLargestNote = 4096; ///< of those that are looked at for a build ID

struct section {
    std::uint32_t name;
    std::uint32_t type;
    std::uint64_t flags;
    std::uint64_t offset;
    std::uint64_t size;
    std::uint32_t link;
};

/// The section table of a file, and its sections' bytes.
class elf_reader {
  public:
    explicit elf_reader(const file_part& file);

    elf_type type() const { return type_; }
    std::size_t sections() const { return headers_.size() / header_size_; }
    section at(std::size_t index) const { return parse(headers_, index * header_size_); }
    std::string_view name(const section& of) const;
    void append(const section& of, byte_buffer* to);
    std::string build_id() const;

  private:
    std::uint64_t word(std::string_view bytes, std::size_t offset) const;
    section parse(std::string_view bytes, std::size_t offset) const;
    void read_headers(std::string_view header);
    void unpack(std::string_view bytes, byte_buffer* to) const;
    std::string build_id_in(const section& note) const;

    const file_part& file_;
    const elf_layout* layout_;
    elf_type type_ = elf_type::other;
    std::size_t header_size_ = 0; ///< of a section
    std::string headers_;         ///< of all sections
    std::string names_;           ///< of all sections
    std::uint64_t appended_ = 0;  ///< bytes of the file that were taken
};

elf_reader::elf_reader(const file_part& file) : file_(file) {
    const std::string_view ident = file.at(0, 20);
    if (!is_elf(ident) || (ident[4] != 1 && ident[4] != 2))
        throw input_error("is a damaged ELF file");
    if (ident[5] != 1)
        throw not_of_interest(
            "is a big-endian ELF file, which is not supported; give the output of llvm-cov export");
    layout_ = ident[4] == 2 ? &kLayout64 : &kLayout32;
    const std::uint16_t type = little_endian_at<std::uint16_t>(ident, 16);
    type_ = type == 1 ? elf_type::object : type == 2 || type == 3 ? elf_type::program : elf_type::other;
    read_headers(file.at(0, layout_->file_header));
}

std::uint64_t elf_reader::word(std::string_view bytes, std::size_t offset) const {
    return layout_->wide ? little_endian_at<std::uint64_t>(bytes, offset)
                         : little_endian_at<std::uint32_t>(bytes, offset);
}

section elf_reader::parse(std::string_view bytes, std::size_t offset) const {
    const std::string_view header = bytes.substr(offset, layout_->section_header);
    return {
        .name = little_endian_at<std::uint32_t>(header, 0),
        .type = little_endian_at<std::uint32_t>(header, 4),
        .flags = word(header, 8),
        .offset = word(header, layout_->offset),
        .size = word(header, layout_->size),
        .link = little_endian_at<std::uint32_t>(header, layout_->link),
    };
}

void elf_reader::read_headers(std::string_view header) {
    const std::uint64_t offset = word(header, layout_->sections_offset);
    header_size_ = little_endian_at<std::uint16_t>(header, layout_->section_size);
    std::uint64_t number = little_endian_at<std::uint16_t>(header, layout_->section_number);
    std::uint64_t of_names = little_endian_at<std::uint16_t>(header, layout_->section_of_names);
    if (offset == 0)
        throw not_of_interest("has no sections; give the file as the linker wrote it");
    if (header_size_ < layout_->section_header)
        throw input_error("is a damaged ELF file: its section headers are too small");
    const section first = parse(file_.at(offset, header_size_), 0);
    if (number == 0)
        number = first.size;
    if (of_names == kNamesElsewhere)
        of_names = first.link;
    if (number > file_.size() / header_size_ || of_names >= number)
        throw input_error("is a damaged ELF file: its sections do not fit into it");
    headers_ = file_.at(offset, number * header_size_);
    const section names = at(static_cast<std::size_t>(of_names));
    names_ = names.type == kNoBytes ? std::string_view() : file_.at(names.offset, names.size);
}

std::string_view elf_reader::name(const section& of) const {
    if (of.name >= names_.size())
        return {};
    const std::string_view rest = std::string_view(names_).substr(of.name);
    return rest.substr(0, rest.find('\0'));
}

void elf_reader::unpack(std::string_view bytes, byte_buffer* to) const {
    if (bytes.size() < layout_->packed_stream || little_endian_at<std::uint32_t>(bytes, 0) != 1)
        throw input_error("has compressed sections of an unknown kind; "
                          "decompress them with objcopy --decompress-debug-sections");
    byte_buffer unpacked;
    inflate_exactly(bytes.substr(layout_->packed_stream), word(bytes, layout_->packed_size), &unpacked);
    to->append(unpacked.view());
}

void elf_reader::append(const section& of, byte_buffer* to) {
    if (of.type == kNoBytes)
        return;
    if (of.size > file_.size() - appended_) // sections that overlap could take any time and memory
        throw input_error("is a damaged ELF file: its sections do not fit into it");
    appended_ += of.size;
    constexpr std::string_view zeros("\0\0\0\0\0\0\0", 7);
    to->append(zeros.substr(0, static_cast<std::size_t>(round_up_8(to->size()) - to->size())));
    if ((of.flags & kCompressed) != 0)
        unpack(file_.at(of.offset, of.size), to);
    else
        file_.append(of.offset, of.size, to);
}

std::string elf_reader::build_id_in(const section& note) const {
    byte_reader notes(file_.at(note.offset, note.size));
    while (notes.left() >= 12) {
        const std::uint64_t name_size = notes.u32();
        const std::uint64_t text_size = notes.u32();
        const bool is_id = notes.u32() == kBuildIdNote;
        const std::uint64_t padded_name = (name_size + 3) & ~std::uint64_t{3};
        const std::uint64_t padded_text = (text_size + 3) & ~std::uint64_t{3};
        if (padded_name + padded_text > notes.left())
            break;
        const std::string_view name = notes.bytes(padded_name).substr(0, static_cast<std::size_t>(name_size));
        const std::string_view text = notes.bytes(padded_text).substr(0, static_cast<std::size_t>(text_size));
        if (is_id && name == std::string_view("GNU\0", 4))
            return std::string(text);
    }
    return {};
}

std::string elf_reader::build_id() const {
    std::string id;
    for (std::size_t i = 0; i < sections() && id.empty(); ++i) {
        const section note = at(i);
        if (note.type == kNote && note.size <= kLargestNote)
            id = build_id_in(note);
    }
    return id;
}

} // namespace

bool is_elf(std::string_view start) {
    return start.starts_with("\x7f"
                             "ELF");
}

void read_mapped_sections(const file_part& file, mapped_sections* result) {
    elf_reader elf(file);
    for (byte_buffer* const part : {&result->tables, &result->functions, &result->names})
        part->clear();
    bool instrumented = false;
    bool mapped = false;
    for (std::size_t i = 0; i < elf.sections(); ++i) {
        const section found = elf.at(i);
        const std::string_view name = elf.name(found);
        if (!name.starts_with("__llvm_")) // nearly all
            continue;
        byte_buffer* const part = name == "__llvm_covmap"      ? &result->tables
                                  : name == "__llvm_covfun"    ? &result->functions
                                  : name == "__llvm_prf_names" ? &result->names
                                                               : nullptr;
        if (!part)
            continue;
        elf.append(found, part);
        instrumented = true;
        mapped = mapped || part == &result->tables;
    }
    if (!instrumented)
        throw not_of_interest("has no coverage mapping: it was not compiled with "
                              "-fprofile-instr-generate -fcoverage-mapping");
    if (!mapped)
        throw not_of_interest("has no coverage mapping: it was stripped of it, or compiled without "
                              "-fcoverage-mapping; give the file as the linker wrote it");
    result->type = elf.type();
    result->build_id = elf.build_id();
}

std::string read_build_id(const file_part& file) {
    const elf_reader elf(file);
    return elf.type() == elf_type::program ? elf.build_id() : std::string();
}
