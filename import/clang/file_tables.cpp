#include "import/clang/file_tables.h"

#include "import/clang/byte_reader.h"
#include "import/clang/inflate.h"
#include "import/clang/known_versions.h"
#include "import/clang/name_hash.h"

#include <algorithm>

constexpr std::uint32_t kDirectoryVersion = 6; ///< first one with the directory of the compilation
constexpr std::size_t kLongestName = 4096;     ///< of a path that can be opened

std::string normal_source_name(std::string_view directory, std::string_view name) {
    std::string whole;
    if (!name.starts_with('/') && !directory.empty())
        whole.append(directory).append("/");
    whole += name;
    const bool absolute = whole.starts_with('/');
    std::string normal;
    std::size_t kept = 0; // size of the ".." at the start of a relative name: they stay
    for (std::string_view rest = whole; !rest.empty();) {
        const std::string_view part = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
        if (part.empty() || part == ".")
            continue;
        const bool up = part == "..";
        if (up && (absolute || normal.size() > kept)) {
            const std::size_t slash = normal.rfind('/');
            normal.resize(slash == std::string::npos ? 0 : slash);
            continue;
        }
        if (absolute || !normal.empty())
            normal += '/';
        normal += part;
        if (up)
            kept = normal.size();
    }
    return normal;
}

static std::uint32_t checked_version(std::uint32_t stored) {
    if (stored < kOldestMapping - 1)
        throw input_error("was made by an older clang (before 11), whose coverage mapping is not supported; "
                          "give the output of that version's llvm-cov export");
    if (stored > kNewestMapping - 1)
        throw input_error("was made by a newer clang, whose coverage mapping is not supported; "
                          "give the output of that version's llvm-cov export");
    return stored + 1;
}

void source_files::read_tables(std::string_view section) {
    object_.clear();
    byte_reader reader(section);
    for (; !reader.empty(); reader.align_8()) {
        reader.u32();
        const std::uint32_t size = reader.u32();
        reader.u32();
        const std::uint32_t version = checked_version(reader.u32());
        const std::string_view packed = reader.bytes(size);
        const std::uint64_t key = name_hash(packed);
        object_.emplace(key, decode(packed, key, version >= kDirectoryVersion));
    }
}

/// The table that is known already, or a new one.
const file_table* source_files::decode(std::string_view packed, std::uint64_t key, bool has_directory) {
    const auto [entry, added] = decoded_[has_directory ? 1 : 0].try_emplace(key);
    if (!added)
        return &entry->second;
    byte_reader head(packed);
    const std::uint64_t number = head.leb();
    const std::uint64_t size = head.leb();
    const std::uint64_t packed_size = head.leb();
    byte_buffer unpacked;
    std::string_view text = head.bytes(packed_size == 0 ? size : packed_size);
    if (packed_size != 0) {
        inflate_exactly(text, size, &unpacked);
        text = unpacked.view();
    }
    if (number > text.size())
        throw input_error("has a damaged table of source files");
    byte_reader names(text);
    std::string_view directory;
    for (std::uint64_t i = 0; i < number; ++i) {
        const std::string_view name = names.bytes(names.leb());
        if (name.size() > kLongestName)
            throw input_error("has a damaged table of source files");
        if (i == 0 && has_directory)
            directory = name;
        entry->second.push_back(file_number(has_directory ? normal_source_name(i == 0 ? "" : directory, name)
                                                          : std::string(name)));
    }
    return &entry->second;
}

std::uint32_t source_files::file_number(std::string name) {
    const auto [entry, added] = numbers_.emplace(std::move(name), static_cast<std::uint32_t>(names_.size()));
    if (added)
        names_.push_back(&entry->first);
    return entry->second;
}

const file_table* source_files::table(std::uint64_t key) const {
    const auto found = object_.find(key);
    return found == object_.end() ? nullptr : found->second;
}

/// The number of a list that is known already, or of a new one.
std::uint32_t source_files::add_list(const std::vector<std::uint32_t>& files) {
    std::uint64_t hash = files.size();
    for (const std::uint32_t file : files)
        hash = mix_hash(hash, file);
    const std::uint32_t known = list_indices_.find(hash, [&](std::uint32_t number) {
        return std::equal(files.begin(), files.end(), list(number), list(number) + lists_[number].size);
    });
    if (known != hash_index::kNone)
        return known;
    const std::uint32_t added = static_cast<std::uint32_t>(lists_.size());
    list_indices_.add(hash, added);
    lists_.push_back({listed_.size(), static_cast<std::uint32_t>(files.size())});
    listed_.insert(listed_.end(), files.begin(), files.end());
    if (files.size() == 1) {
        alone_.resize(names_.size(), hash_index::kNone);
        alone_[files[0]] = added;
    }
    return added;
}
