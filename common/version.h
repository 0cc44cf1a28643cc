// The version of all programs.
#pragma once

/// The version that CMakeLists.txt gives, such as "2.0.0".
const char* program_version();
