// A stream that is read, closed however its reader ends. For what is written see output_file.h.
#pragma once

#include <cstdio>
#include <memory>

struct file_closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

using file_ptr = std::unique_ptr<std::FILE, file_closer>;
