// vexcov-profile-text: turns a dynamic profile written as text into the binary file.
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("Usage: vexcov-profile-text TEXT_FILE DPI_FILE\n", stderr);
        return 1;
    }
    try {
        // The two may be the same file.
        const std::string profile = compile_profile_text(read_file(argv[1]));
        write_file(argv[2], profile);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ERROR: %s: %s\n", argv[1], error.what());
        return 1;
    }
}
