#include "import/clang/file_kind.h"

#include "import/clang/archive.h"
#include "import/clang/elf_file.h"
#include "import/clang/indexed_profile.h"
#include "import/clang/raw_profile.h"

#include <algorithm>

constexpr std::size_t kStart = 20;

/// Programs of systems that are not supported.
static bool is_foreign_program(std::string_view start) {
    for (const std::string_view magic :
         {std::string_view("\xfe\xed\xfa\xce"), std::string_view("\xfe\xed\xfa\xcf"),
          std::string_view("\xce\xfa\xed\xfe"), std::string_view("\xcf\xfa\xed\xfe"),
          std::string_view("\xca\xfe\xba\xbe"), std::string_view("MZ"), std::string_view("\0asm", 4)}) {
        if (start.starts_with(magic))
            return true;
    }
    return false;
}

file_kind kind_of(file_bytes* file) {
    const std::string_view start = file->at(0, std::min<std::uint64_t>(file->size(), kStart));
    if (start.empty())
        return file_kind::empty;
    if (is_elf(start))
        return start.size() == kStart && start[16] == 1 && start[17] == 0 ? file_kind::object
                                                                          : file_kind::program;
    return is_archive(start)                                    ? file_kind::archive
           : is_raw_profile(start) || is_indexed_profile(start) ? file_kind::profile
           : is_foreign_program(start)                          ? file_kind::foreign_program
                                                                : file_kind::other;
}
