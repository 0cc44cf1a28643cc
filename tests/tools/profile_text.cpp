#include "tests/tools/profile_text.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

using words = std::vector<std::string>;

/// One record as the text gives it.
struct text_record {
    bool wide = false;                   ///< 64-bit counters
    std::map<std::string, words> fields; ///< what stands behind each key: its words, or the whole rest

    const words& all(const std::string& key) const {
        static const words kNone;
        const auto found = fields.find(key);
        return found == fields.end() ? kNone : found->second;
    }
    std::string one(const std::string& key, const std::string& otherwise) const {
        return all(key).empty() ? otherwise : all(key)[0];
    }
};

struct text_profile {
    std::uint64_t runs = 0, word = 0;
    std::string text;
    bool any_order = false;
    std::vector<text_record> records;
    std::vector<words> patches; ///< "TYPE PLACE VALUE" or "cut PLACE"
};

static std::uint64_t number(const std::string& token) {
    char* end = nullptr;
    const std::uint64_t value = std::strtoull(token.c_str(), &end, 0);
    if (token.empty() || *end != '\0')
        throw std::runtime_error("not a number: \"" + token + "\"");
    return value;
}

// Reading the text.

static std::string rest_of(std::istringstream& line) {
    std::string rest;
    std::getline(line >> std::ws, rest);
    return rest;
}

static void read_header(std::istringstream& line, text_profile& profile) {
    for (std::string key, value; line >> key;) {
        if (key == "text") {
            profile.text = rest_of(line);
            return;
        }
        line >> value;
        (key == "runs" ? profile.runs : profile.word) = number(value);
    }
}

static void read_field(const std::string& key, std::istringstream& line, text_record& record) {
    static const std::set<std::string> kNames{"file", "function", "routine"},
        kWords{"blocks", "group2", "group3", "entry", "flags", "word", "address", "vtable", "version"};
    words& values = record.fields[key];
    if (kNames.contains(key))
        values.push_back(rest_of(line));
    else if (!kWords.contains(key))
        throw std::runtime_error("unknown line \"" + key + "\"");
    for (std::string word; line >> word;)
        values.push_back(word);
}

static void read_line(const std::string& text, text_profile& profile) {
    std::istringstream line(text);
    std::string key, word;
    line >> key;
    if (key.empty() || key[0] == '#')
        return;
    if (key == "header")
        read_header(line, profile);
    else if (key == "order")
        profile.any_order = line >> word && word == "any";
    else if (key == "record") {
        line >> word;
        if (word != "32" && word != "64")
            throw std::runtime_error("unknown width \"" + word + "\"");
        profile.records.push_back({word == "64", {}});
    } else if (key == "set" || key == "cut") {
        words patch;
        if (key == "cut")
            patch.push_back(key);
        while (line >> word)
            patch.push_back(word);
        patch.resize(3);
        profile.patches.push_back(patch);
    } else if (profile.records.empty())
        throw std::runtime_error("unknown line \"" + key + "\"");
    else
        read_field(key, line, profile.records.back());
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

static void put_counter(std::string& bytes, const std::string& count, bool wide) {
    if (wide)
        put_bytes(bytes, number(count), 8);
    else
        put_bytes(bytes, std::bit_cast<std::uint32_t>(std::strtof(count.c_str(), nullptr)), 4);
}

/// The counters of `blocks` go to `counters`, their places, where they have any, to `positions`.
static void put_blocks(const words& blocks, bool wide, std::string& counters, std::string& positions) {
    for (const std::string& block : blocks) {
        const std::size_t colon = block.find(':'), equals = block.find('=');
        if ((colon == std::string::npos) != (equals == std::string::npos))
            throw std::runtime_error("neither COUNT nor LINE:COLUMN=COUNT: \"" + block + "\"");
        if ((colon == std::string::npos) != (blocks[0].find(':') == std::string::npos))
            throw std::runtime_error("blocks with and without a position in one record");
        if (colon != std::string::npos) {
            put_bytes(positions, number(block.substr(0, colon)), 4);
            put_bytes(positions, number(block.substr(colon + 1, equals - colon - 1)), 4);
        }
        put_counter(counters, block.substr(colon == std::string::npos ? 0 : equals + 1), wide);
    }
}

/// The record's bytes. Its strings go to `strings`, the bytes of the string area, which begins at the file
/// offset `strings_at`.
static std::string record_bytes(const text_record& record, std::string& strings, std::uint64_t strings_at) {
    const bool wide = record.wide;
    const int width = wide ? 8 : 4;
    const auto string_at = [&](const std::string& text) {
        const std::uint64_t offset = strings_at + strings.size();
        strings += text + '\0';
        return offset;
    };
    const words &blocks = record.all("blocks"), &routines = record.all("routine");
    const words entries =
        record.fields.contains("entry") || blocks.empty() ? record.all("entry") : words{"0"};
    const std::string function = record.one("function", "");

    std::string body, positions;
    put_blocks(blocks, wide, body, positions);
    for (const char* group : {"group2", "group3"})
        for (const std::string& count : record.all(group))
            put_counter(body, count, wide);
    body.append(96 * record.all("group3").size(), '\0');
    for (std::size_t i = 0; i < entries.size(); ++i)
        put_bytes(body, string_at(i < routines.size() ? routines[i] : function), width);
    for (const std::string& index : entries)
        put_bytes(body, number(index), 4);
    while (body.size() % static_cast<std::size_t>(width) != 0)
        body += '\0';

    std::string head;
    const auto word = [&](std::uint64_t value) { put_bytes(head, value, 4); };
    const auto field = [&](const char* key) { return number(record.one(key, "0")); };
    word((positions.empty() ? 0U : 0x10U) | (wide ? 0x40U : 0U) |
         number(record.one("version", wide ? "3" : "2")) << 8);
    if (wide)
        word(0);
    word((wide ? 80 : 60) + body.size() + positions.size());
    word(entries.size());
    word(blocks.size());
    word(record.all("group2").size());
    word(record.all("group3").size());
    word(field(wide ? "word" : "flags"));
    word(field(wide ? "flags" : "word"));
    if (wide)
        word(0);
    put_bytes(head, string_at(record.one("file", "")), width);
    put_bytes(head, string_at(function), width);
    put_bytes(head, field("address"), 8);
    put_bytes(head, field("vtable"), 8);
    const words& vtable = record.all("vtable");
    put_bytes(head, vtable.size() < 2 ? 0 : string_at(vtable[1]), width);
    return head + body + positions;
}

static std::size_t place_of(const std::string& place, const std::vector<std::size_t>& record_places) {
    const std::size_t plus = place.find('+');
    if (place.empty() || place[0] != 'r' || plus == std::string::npos)
        return number(place);
    return record_places.at(number(place.substr(1, plus - 1))) + number(place.substr(plus + 1));
}

static void apply(const words& patch, const std::vector<std::size_t>& record_places, std::string& bytes) {
    const int width = patch[0] == "u8" ? 1 : patch[0] == "u32" ? 4 : patch[0] == "u64" ? 8 : 0;
    if (width == 0 && patch[0] != "cut")
        throw std::runtime_error("unknown type \"" + patch[0] + "\"");
    const std::size_t place = place_of(patch[1], record_places);
    if (place + static_cast<std::size_t>(width) > bytes.size())
        throw std::runtime_error("\"" + patch[1] + "\" lies behind the end of the file");
    if (width == 0)
        return bytes.resize(place);
    std::string value;
    put_bytes(value, number(patch[2]), width);
    bytes.replace(place, value.size(), value);
}

static void check_order(const text_profile& profile) {
    std::string last;
    for (const text_record& record : profile.records) {
        const std::string key = record.one("file", "") + "'" + record.one("function", "") + "'";
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
        for (const std::uint64_t field :
             {std::uint64_t{0xDC0B}, profile.runs, std::uint64_t{profile.records.size()}, profile.word})
            put_bytes(bytes, field, 4);
        bytes += profile.text.substr(0, 511);
        bytes.resize(528, '\0');
        for (const text_record& record : profile.records) {
            record_places.push_back(bytes.size());
            bytes += record_bytes(record, strings, strings_at);
        }
        strings_at = bytes.size();
    }
    bytes += strings;
    for (const words& patch : profile.patches)
        apply(patch, record_places, bytes);
    return bytes;
}
