// What build systems leave in a build tree that is no part of the program.
#pragma once

#include <filesystem>

/// Whether CMake tests the compiler in this directory: "CMakeFiles/3.25.1" and the like. It does so with the
/// flags of the program, so that its little programs are instrumented, too.
bool is_compiler_test(const std::filesystem::path& directory);
