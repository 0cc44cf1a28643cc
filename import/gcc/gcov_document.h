// What gcov knows of one object file, as its JSON has it.
#pragma once

#include "import/source_region.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A stretch of gcov_document::text.
struct text_stretch {
    std::size_t begin = 0;
    std::size_t size = 0;
};

/// One compiled function: an instance of a template, a variant of a constructor.
struct gcov_function {
    text_stretch name;         ///< mangled
    text_stretch demangled;    ///< the name itself where the document has none
    source_position start;     ///< of its name, or of the bracket of a lambda; line 0: written nowhere
    source_position end;       ///< of its closing brace
    std::uint64_t entries = 0; ///< executions
};

/// One line of a file or, where several functions start on one line, of one of these.
struct gcov_line {
    text_stretch function;   ///< mangled name of the function that gcov holds to be the line's; may be empty
    std::uint32_t line = 0;  ///< 0: code of no line
    bool unexecuted = false; ///< some block was not executed, those of exception paths aside
    std::uint64_t count = 0;
};

/// One source file: stretches of the document's functions and lines.
struct gcov_file {
    text_stretch name;
    std::size_t first_function = 0;
    std::size_t functions = 0;
    std::size_t first_line = 0;
    std::size_t lines = 0;
};

/// What gcov knows of one object file.
struct gcov_document {
    std::string text;          ///< all names
    text_stretch directory;    ///< where the compiler ran; empty when the document does not say
    std::uint64_t clamped = 0; ///< counts that were negative, and are 0 here, or too large
    std::vector<gcov_file> files;
    std::vector<gcov_function> functions;
    std::vector<gcov_line> lines;

    std::string_view view(text_stretch stretch) const {
        return std::string_view(text).substr(stretch.begin, stretch.size);
    }
};
