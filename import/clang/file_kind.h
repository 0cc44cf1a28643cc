// What a file is, by its first bytes.
#pragma once

#include "import/clang/file_bytes.h"

enum class file_kind {
    empty,
    program,         ///< ELF, linked
    object,          ///< ELF, to be linked
    archive,         ///< of object files
    profile,         ///< of an instrumented program, raw or indexed
    foreign_program, ///< of a system that is not supported
    other,           ///< none of clang's own files; maybe an export of llvm-cov
};

/// The kind of `file`. Throws input_error where it cannot be read.
file_kind kind_of(file_bytes* file);
