#include "common/directory_prefix.h"

std::string directory_prefix(const std::filesystem::path& path) {
    std::string text = path.lexically_normal().string();
    if (text.empty() || text.back() != '/')
        text += '/';
    return text;
}
