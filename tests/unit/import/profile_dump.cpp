#include "tests/unit/import/profile_dump.h"

#include <cstdint>
#include <stdexcept>

static std::uint64_t number(const std::string& bytes, std::uint64_t offset, unsigned width) {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < width; ++i)
        value |= std::uint64_t{static_cast<unsigned char>(bytes.at(offset + i))} << (8 * i);
    return value;
}

static std::string text(const std::string& bytes, std::uint64_t offset) {
    return bytes.substr(offset, bytes.find('\0', offset) - offset);
}

static std::string dump_record(const std::string& bytes, std::uint64_t record) {
    if (bytes.at(record) != 0x50 || bytes.at(record + 1) != 3)
        return "(no 64-bit record with lines)";
    const std::uint64_t blocks = number(bytes, record + 16, 4);
    const std::uint64_t routine = record + 80 + 8 * blocks;
    const std::uint64_t positions = routine + 16;
    if (number(bytes, record + 12, 4) != 1 || number(bytes, record + 20, 8) != 0 ||
        number(bytes, record + 8, 4) != positions + 8 * blocks - record)
        return "(wrong areas)";
    std::string line = text(bytes, number(bytes, record + 40, 8)) + "'" +
                       text(bytes, number(bytes, record + 48, 8)) + "' " +
                       text(bytes, number(bytes, routine, 8)) + ":";
    for (std::uint64_t i = 0; i < blocks; ++i) {
        line += " " + std::to_string(number(bytes, positions + 8 * i, 4));
        line += ":" + std::to_string(number(bytes, positions + 8 * i + 4, 4));
        line += "=" + std::to_string(number(bytes, record + 80 + 8 * i, 8));
    }
    return line + " entry " + std::to_string(number(bytes, routine + 8, 4));
}

std::string dump_profile(const std::string& bytes) {
    if (number(bytes, 0, 4) != 0xDC0B)
        throw std::out_of_range("no profile");
    std::string dump = "runs " + std::to_string(number(bytes, 4, 4)) + "\n";
    std::uint64_t record = 528;
    for (std::uint64_t i = number(bytes, 8, 4); i > 0; --i) {
        dump += dump_record(bytes, record) + "\n";
        record += number(bytes, record + 8, 4);
    }
    return dump;
}
