#include "tests/tools/profile_text.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <vector>

/// One record as the text gives it.
struct text_record {
    bool wide = false; ///< 64-bit counters
    std::string file, function, vtable_name;
    std::vector<std::string> counts, second_group, third_group; ///< as written; read by the record's width
    std::vector<std::uint32_t> positions;                       ///< line, column, line, column, ...
    std::vector<std::uint32_t> entries;
    bool entries_given = false;
    std::vector<std::string> routines;
    std::uint32_t flags = 0, word = 0;
    std::uint64_t address = 0, vtable_address = 0;
    std::uint32_t version = 2;
};

/// A change of the finished bytes.
struct text_patch {
    int width = 0; ///< bytes to overwrite; 0 cuts the file
    std::string place;
    std::uint64_t value = 0;
};

struct text_profile {
    std::uint32_t runs = 0, word = 0;
    std::string text;
    bool any_order = false;
    std::vector<text_record> records;
    std::vector<text_patch> patches;
};

static std::uint64_t number(const std::string& token) {
    char* end = nullptr;
    const std::uint64_t value = std::strtoull(token.c_str(), &end, 0);
    if (token.empty() || *end != '\0')
        throw std::runtime_error("not a number: \"" + token + "\"");
    return value;
}

static std::uint32_t number32(const std::string& token) {
    return static_cast<std::uint32_t>(number(token));
}

static std::string next_token(std::istringstream& line) {
    std::string token;
    line >> token;
    return token;
}

static std::string rest_of(std::istringstream& line) {
    std::string rest;
    std::getline(line >> std::ws, rest);
    return rest;
}

// Reading the text.

static void read_header(std::istringstream& line, text_profile& profile) {
    for (std::string key = next_token(line); !key.empty(); key = next_token(line)) {
        if (key == "runs")
            profile.runs = number32(next_token(line));
        else if (key == "word")
            profile.word = number32(next_token(line));
        else if (key == "text")
            profile.text = rest_of(line);
        else
            throw std::runtime_error("unknown header field \"" + key + "\"");
    }
}

static void read_blocks(std::istringstream& line, text_record& record) {
    for (std::string token = next_token(line); !token.empty(); token = next_token(line)) {
        const std::size_t colon = token.find(':'), equals = token.find('=');
        if ((colon == std::string::npos) != (equals == std::string::npos))
            throw std::runtime_error("neither COUNT nor LINE:COLUMN=COUNT: \"" + token + "\"");
        if (colon != std::string::npos) {
            record.positions.push_back(number32(token.substr(0, colon)));
            record.positions.push_back(number32(token.substr(colon + 1, equals - colon - 1)));
            token.erase(0, equals + 1);
        }
        record.counts.push_back(token);
        if (!record.positions.empty() && record.positions.size() != 2 * record.counts.size())
            throw std::runtime_error("blocks with and without a position in one record");
    }
}

static void read_list(std::istringstream& line, std::vector<std::string>& list) {
    for (std::string token = next_token(line); !token.empty(); token = next_token(line))
        list.push_back(token);
}

static bool read_record_field(const std::string& key, std::istringstream& line, text_record& record) {
    if (key == "file")
        record.file = rest_of(line);
    else if (key == "function")
        record.function = rest_of(line);
    else if (key == "blocks")
        read_blocks(line, record);
    else if (key == "entry") {
        record.entries_given = true;
        for (std::string token = next_token(line); !token.empty(); token = next_token(line))
            record.entries.push_back(number32(token));
    } else if (key == "routine")
        record.routines.push_back(rest_of(line));
    else if (key == "group2")
        read_list(line, record.second_group);
    else if (key == "group3")
        read_list(line, record.third_group);
    else if (key == "flags")
        record.flags = number32(next_token(line));
    else if (key == "word")
        record.word = number32(next_token(line));
    else if (key == "address")
        record.address = number(next_token(line));
    else if (key == "vtable") {
        record.vtable_address = number(next_token(line));
        record.vtable_name = rest_of(line);
    } else if (key == "version")
        record.version = number32(next_token(line));
    else
        return false;
    return true;
}

static text_patch read_patch(std::istringstream& line) {
    text_patch patch;
    const std::string type = next_token(line);
    patch.width = type == "u8" ? 1 : type == "u32" ? 4 : type == "u64" ? 8 : 0;
    if (patch.width == 0)
        throw std::runtime_error("unknown type \"" + type + "\"");
    patch.place = next_token(line);
    patch.value = number(next_token(line));
    return patch;
}

static text_record read_record_start(std::istringstream& line) {
    text_record record;
    const std::string width = next_token(line);
    if (width != "32" && width != "64")
        throw std::runtime_error("unknown width \"" + width + "\"");
    record.wide = width == "64";
    record.version = record.wide ? 3 : 2;
    return record;
}

static void read_line(const std::string& text, text_profile& profile) {
    std::istringstream line(text);
    const std::string key = next_token(line);
    if (key.empty() || key[0] == '#')
        return;
    if (key == "header")
        read_header(line, profile);
    else if (key == "order")
        profile.any_order = next_token(line) == "any";
    else if (key == "record")
        profile.records.push_back(read_record_start(line));
    else if (key == "set")
        profile.patches.push_back(read_patch(line));
    else if (key == "cut")
        profile.patches.push_back({0, next_token(line), 0});
    else if (profile.records.empty() || !read_record_field(key, line, profile.records.back()))
        throw std::runtime_error("unknown line \"" + key + "\"");
}

static text_profile read_text(std::string_view text) {
    text_profile profile;
    std::istringstream input{std::string(text)};
    int line_number = 0;
    for (std::string line; std::getline(input, line);) {
        ++line_number;
        try {
            read_line(line, profile);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error("line " + std::to_string(line_number) + ": " + error.what());
        }
    }
    return profile;
}

// Writing the bytes.

static void put_bytes(std::string& bytes, std::uint64_t value, int width) {
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xff);
}

static void pad(std::string& bytes, std::size_t width) {
    while (bytes.size() % width != 0)
        bytes += '\0';
}

static void put_counter(std::string& bytes, const std::string& count, bool wide) {
    if (wide)
        put_bytes(bytes, number(count), 8);
    else
        put_bytes(bytes, std::bit_cast<std::uint32_t>(std::strtof(count.c_str(), nullptr)), 4);
}

/// The record's bytes. Its strings go to `strings`, the bytes of the string area, which begins at the file
/// offset `strings_at`.
static std::string record_bytes(const text_record& record, std::string& strings, std::uint64_t strings_at) {
    const int width = record.wide ? 8 : 4;
    const auto string_at = [&](const std::string& text) {
        const std::uint64_t offset = strings_at + strings.size();
        strings += text + '\0';
        return offset;
    };
    std::vector<std::uint32_t> entries = record.entries;
    if (!record.entries_given && !record.counts.empty())
        entries.push_back(0);

    std::string body;
    for (const auto* group : {&record.counts, &record.second_group, &record.third_group})
        for (const std::string& count : *group)
            put_counter(body, count, record.wide);
    body.append(96 * record.third_group.size(), '\0');
    for (std::size_t i = 0; i < entries.size(); ++i)
        put_bytes(body, string_at(i < record.routines.size() ? record.routines[i] : record.function), width);
    for (const std::uint32_t index : entries)
        put_bytes(body, index, 4);
    pad(body, static_cast<std::size_t>(width));
    for (const std::uint32_t number : record.positions)
        put_bytes(body, number, 4);

    std::string head;
    const auto word = [&](std::uint64_t value) { put_bytes(head, value, 4); };
    word((record.positions.empty() ? 0U : 0x10U) | (record.wide ? 0x40U : 0U) | record.version << 8);
    if (record.wide)
        word(0);
    word((record.wide ? 80 : 60) + body.size());
    word(entries.size());
    word(record.counts.size());
    word(record.second_group.size());
    word(record.third_group.size());
    word(record.wide ? record.word : record.flags);
    word(record.wide ? record.flags : record.word);
    if (record.wide)
        word(0);
    put_bytes(head, string_at(record.file), width);
    put_bytes(head, string_at(record.function), width);
    put_bytes(head, record.address, 8);
    put_bytes(head, record.vtable_address, 8);
    put_bytes(head, record.vtable_name.empty() ? 0 : string_at(record.vtable_name), width);
    return head + body;
}

static std::size_t place_of(const std::string& place, const std::vector<std::size_t>& record_places) {
    const std::size_t plus = place.find('+');
    if (place.empty() || place[0] != 'r' || plus == std::string::npos)
        return number(place);
    return record_places.at(number(place.substr(1, plus - 1))) + number(place.substr(plus + 1));
}

static void apply(const text_patch& patch, const std::vector<std::size_t>& record_places,
                  std::string& bytes) {
    const std::size_t place = place_of(patch.place, record_places);
    if (place + static_cast<std::size_t>(patch.width) > bytes.size())
        throw std::runtime_error("\"" + patch.place + "\" lies behind the end of the file");
    if (patch.width == 0)
        return bytes.resize(place);
    std::string value;
    put_bytes(value, patch.value, patch.width);
    bytes.replace(place, value.size(), value);
}

static void check_order(const text_profile& profile) {
    std::string last;
    for (const text_record& record : profile.records) {
        const std::string key = record.file + "'" + record.function + "'";
        if (!profile.any_order && key < last)
            throw std::runtime_error("record " + key + " is out of order");
        last = key;
    }
}

std::string compile_profile_text(std::string_view text) {
    const text_profile profile = read_text(text);
    check_order(profile);

    // The records are made twice: their sizes, and with them the place of the strings, come from the first
    // pass.
    std::string bytes, strings;
    std::vector<std::size_t> record_places;
    std::uint64_t strings_at = 0;
    for (int pass = 0; pass < 2; ++pass) {
        bytes.clear();
        strings.clear();
        record_places.clear();
        put_bytes(bytes, 0xDC0B, 4);
        put_bytes(bytes, profile.runs, 4);
        put_bytes(bytes, profile.records.size(), 4);
        put_bytes(bytes, profile.word, 4);
        bytes += profile.text.substr(0, 511);
        bytes.resize(528, '\0');
        for (const text_record& record : profile.records) {
            record_places.push_back(bytes.size());
            bytes += record_bytes(record, strings, strings_at);
        }
        strings_at = bytes.size();
    }
    bytes += strings;
    for (const text_patch& patch : profile.patches)
        apply(patch, record_places, bytes);
    return bytes;
}
