#include "import/clang/archive.h"

#include "import/clang/input_error.h"

#include <charconv>
#include <filesystem>
#include <optional>

constexpr std::size_t kMagicSize = 8;
constexpr std::size_t kHeaderSize = 60;
constexpr std::size_t kNameSize = 16;
constexpr std::size_t kSizeAt = 48;
constexpr std::size_t kSizeDigits = 10;
constexpr std::uint64_t kLargestName = 65536; ///< of a path
constexpr const char* kOrdinary = "!<arch>\n";
constexpr const char* kThin = "!<thin>\n";

static std::uint64_t decimal(std::string_view digits) {
    std::uint64_t value = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc())
        throw input_error("is a damaged archive: a number of a member's header is missing");
    return value;
}

static std::string_view trimmed(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

namespace {

class archive_reader {
  public:
    archive_reader(file_bytes* file, const std::string& path)
        : file_(file), path_(path), thin_(file->at(0, kMagicSize) == kThin) {}

    void read(const std::function<void(const file_part&, const std::string& name)>& on_member);

  private:
    bool is_table(const std::string& name) const { return name == "/" || name == "//" || name == "/SYM64/"; }
    std::string long_name(std::string_view offset) const;
    void
    open_thin_member(const std::string& name,
                     const std::function<void(const file_part&, const std::string& name)>& on_member) const;

    file_bytes* file_;
    const std::string& path_;
    bool thin_;
    std::string long_names_; ///< the member "//"
};

std::string archive_reader::long_name(std::string_view offset) const {
    const std::uint64_t at = decimal(offset);
    if (at >= long_names_.size())
        throw input_error("is a damaged archive: the name of a member is missing");
    const std::string_view rest = std::string_view(long_names_).substr(static_cast<std::size_t>(at));
    std::string_view name = rest.substr(0, rest.find('\n'));
    if (name.ends_with('/'))
        name.remove_suffix(1);
    return std::string(name);
}

void archive_reader::open_thin_member(
    const std::string& name,
    const std::function<void(const file_part&, const std::string& name)>& on_member) const {
    const std::filesystem::path directory = std::filesystem::path(path_).parent_path();
    std::optional<file_bytes> member;
    try {
        member.emplace((directory / name).string());
    } catch (const input_error& error) {
        throw input_error("lists a member " + name + " that " + error.what());
    }
    on_member(file_part(&*member, 0, member->size()), name);
}

void archive_reader::read(const std::function<void(const file_part&, const std::string& name)>& on_member) {
    for (std::uint64_t at = kMagicSize; at < file_->size();) {
        const std::string header(file_->at(at, kHeaderSize));
        std::uint64_t begin = at + kHeaderSize;
        std::string name(trimmed(header.substr(0, kNameSize)));
        const std::uint64_t size = decimal(trimmed(std::string_view(header).substr(kSizeAt, kSizeDigits)));
        const bool here = !thin_ || is_table(name);
        if (here && size > file_->size() - begin)
            throw input_error("is a damaged archive: a member reaches beyond its end");
        at = begin + (here ? size + size % 2 : 0);
        if (name == "//")
            long_names_ = file_->at(begin, size);
        if (is_table(name))
            continue;
        std::uint64_t name_size = 0;
        if (name.starts_with("#1/")) {
            name_size = decimal(std::string_view(name).substr(3));
            if (!here || name_size > size || name_size > kLargestName)
                throw input_error("is a damaged archive: the name of a member is missing");
            name = file_->at(begin, name_size);
            name.resize(name.find_last_not_of('\0') + 1);
        } else if (name.starts_with("/")) {
            name = long_name(std::string_view(name).substr(1));
        } else if (name.ends_with('/')) {
            name.pop_back();
        }
        if (thin_)
            open_thin_member(name, on_member);
        else
            on_member(file_part(file_, begin + name_size, size - name_size), name);
    }
}

} // namespace

bool is_archive(std::string_view start) {
    return start.starts_with(kOrdinary) || start.starts_with(kThin);
}

void for_each_member(file_bytes* file, const std::string& path,
                     const std::function<void(const file_part&, const std::string& name)>& on_member) {
    archive_reader(file, path).read(on_member);
}
