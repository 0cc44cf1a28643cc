#include "profile/dpi_names.h"

#include "profile/checked_io.h"
#include "profile/dpi_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string_view>

namespace {

/// The name read last: names that lie in it are not read again.
struct name_text {
    const char* text = "";
    std::uint64_t offset = 0;
    std::uint64_t end = 0; ///< offset of its NUL, or of the end of the file
};

/// Order in which names of different length are never compared.
struct shorter_first {
    bool operator()(std::string_view a, std::string_view b) const {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    }
};
using long_names = std::set<std::string_view, shorter_first>;

} // namespace

/// Reads the string at `offset` into memory of the handle. Long names that are stored more than once share
/// their memory, so that look-ups see that they are the same without comparing them again and again.
static name_text read_name(DPI_FILE* file, const char* fileName, std::uint64_t offset, long_names& known) {
    const std::string text = pgopti_Read_String(file, fileName, offset);
    if (text.size() >= PGOPTI_LONG_NAME) {
        const auto same = known.find(text);
        if (same != known.end())
            return {same->data(), offset, offset + text.size()};
    }
    file->names.push_back(std::make_unique<char[]>(text.size() + 1));
    char* const kept = file->names.back().get();
    std::memcpy(kept, text.c_str(), text.size() + 1);
    if (text.size() >= PGOPTI_LONG_NAME)
        known.insert({kept, text.size()});
    return {kept, offset, offset + text.size()};
}

bool pgopti_Load_Names(DPI_FILE* file, const char* fileName, std::vector<DPI_NAME_REFERENCE>& references) {
    std::sort(references.begin(), references.end(),
              [](const DPI_NAME_REFERENCE& a, const DPI_NAME_REFERENCE& b) { return a.offset < b.offset; });
    long_names known;
    name_text name;
    bool first = true;
    for (const DPI_NAME_REFERENCE& reference : references) {
        if (first || reference.offset > name.end)
            name = read_name(file, fileName, reference.offset, known);
        first = false;
        if (name.end - reference.offset > UINT32_MAX)
            return false;
        const std::uint64_t skipped = reference.offset - name.offset;
        const std::uint32_t length = static_cast<std::uint32_t>(name.end - reference.offset);
        DPI_INDEX_ENTRY& entry = file->index[reference.entry];
        (reference.is_function ? entry.key_func_name : entry.file_name) = name.text + skipped;
        (reference.is_function ? entry.func_name_length : entry.file_name_length) = length;
    }
    return true;
}

void pgopti_Check_Offset(const char* fileName, std::uint64_t offset) {
    if (offset > INT64_MAX)
        checked_bad_seek(fileName);
}

std::string pgopti_Read_String(DPI_FILE* file, const char* fileName, std::uint64_t offset) {
    pgopti_Check_Offset(fileName, offset);
    std::string text;
    while (offset < file->reader->size()) {
        std::size_t available = 0;
        const unsigned char* bytes = file->reader->peek(offset, &available, fileName);
        const void* end = std::memchr(bytes, 0, available);
        if (end) {
            text.append(reinterpret_cast<const char*>(bytes), static_cast<const char*>(end));
            break;
        }
        text.append(reinterpret_cast<const char*>(bytes), available);
        offset += available;
    }
    return text;
}
