#include "import/build_folders.h"

#include <string>

bool is_compiler_test(const std::filesystem::path& directory) {
    if (directory.parent_path().filename() != "CMakeFiles")
        return false;
    const std::string name = directory.filename().string();
    return name == "CMakeScratch" || name == "CMakeTmp" || (name[0] >= '0' && name[0] <= '9');
}
