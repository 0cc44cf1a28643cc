// vexcov-profile-text: turns a dynamic profile written as text into the binary file.
#include "tests/tools/profile_text.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

static void convert(const char* text_name, const char* dpi_name) {
    std::ifstream input(text_name, std::ios::binary);
    if (!input)
        throw std::runtime_error("cannot be read");
    // The two may be the same file.
    const std::string profile = compile_profile_text(std::string(std::istreambuf_iterator<char>(input), {}));
    std::ofstream output(dpi_name, std::ios::binary);
    output << profile;
    output.close();
    if (!output)
        throw std::runtime_error("cannot write " + std::string(dpi_name));
}

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("Usage: vexcov-profile-text TEXT_FILE DPI_FILE\n", stderr);
        return 1;
    }
    try {
        convert(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ERROR: %s: %s\n", argv[1], error.what());
        return 1;
    }
}
