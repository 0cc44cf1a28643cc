// roman NUMBER|NUMERAL...: shows numbers as Roman numerals, and numerals as numbers.
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

extern "C" {
#include "numeral.h"
}

static std::string convert(const std::string& word) {
    if (const int number = from_numeral(word.c_str()))
        return std::to_string(number);
    char numeral[NUMERAL_SIZE];
    if (!to_numeral(std::atoi(word.c_str()), numeral))
        throw std::invalid_argument(word + " is neither a number from 1 to 3999 nor a numeral");
    return numeral;
}

static int usage() {
    std::cerr << "usage: roman NUMBER|NUMERAL...\n";
    return 1;
}

int main(int argc, char** argv) {
    if (argc < 2)
        return usage();
    try {
        for (int i = 1; i < argc; ++i)
            std::cout << (i > 1 ? " " : "") << convert(argv[i]);
    } catch (const std::invalid_argument& error) {
        std::cerr << "roman: " << error.what() << '\n';
        return 1;
    }
    std::cout << '\n';
}
