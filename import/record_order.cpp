#include "import/record_order.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// Compares keys "file'function'" without building them.
static int compare_keys(std::string_view a_file, std::string_view a_name, std::string_view b_file,
                        std::string_view b_name) {
    const auto byte_at = [](std::string_view file, std::string_view name, std::size_t i) {
        if (i < file.size())
            return static_cast<int>(static_cast<unsigned char>(file[i]));
        i -= file.size();
        if (i == 0 || i == name.size() + 1)
            return static_cast<int>('\'');
        return i <= name.size() ? static_cast<int>(static_cast<unsigned char>(name[i - 1])) : -1;
    };
    for (std::size_t i = 0;; ++i) {
        const int a = byte_at(a_file, a_name, i);
        const int b = byte_at(b_file, b_name, i);
        if (a != b || a == -1)
            return a - b;
    }
}

void sort_records(PGOPTI_PROFILE* profile) {
    const std::vector<std::string>& files = profile->files;
    std::stable_sort(profile->routines.begin(), profile->routines.end(),
                     [&files](const PGOPTI_ROUTINE& a, const PGOPTI_ROUTINE& b) {
                         return compare_keys(files[a.file], a.name, files[b.file], b.name) < 0;
                     });
}
