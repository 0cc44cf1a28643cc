// vexcov-profile-text: turns a dynamic profile written as text into the binary file.
#include "tests/tools/profile_text.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>

static bool convert(const char* text_name, const char* dpi_name) {
    std::ifstream input(text_name, std::ios::binary);
    if (!input) {
        std::fprintf(stderr, "ERROR: cannot open %s\n", text_name);
        return false;
    }
    const std::string text{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
    const std::string bytes = compile_profile_text(text);
    std::ofstream output(dpi_name, std::ios::binary);
    output << bytes;
    output.close();
    if (!output)
        std::fprintf(stderr, "ERROR: cannot write %s\n", dpi_name);
    return static_cast<bool>(output);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("Usage: vexcov-profile-text TEXT_FILE DPI_FILE\n", stderr);
        return 1;
    }
    try {
        return convert(argv[1], argv[2]) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ERROR: %s: %s\n", argv[1], error.what());
        return 1;
    }
}
