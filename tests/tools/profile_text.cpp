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

/// The header or a record as the text gives it.
struct text_record {
    bool wide = false;                   ///< 64-bit counters
    std::map<std::string, words> fields; ///< what stands behind each key: its words, or the whole rest

    words all(const std::string& key) const { return fields.contains(key) ? fields.at(key) : words(); }
    std::string one(const std::string& key, const std::string& otherwise) const {
        return all(key).empty() ? otherwise : all(key)[0];
    }
};

struct text_profile {
    text_record header;
    bool any_order = false;
    words sources; ///< file names that the records share
    std::vector<text_record> records;
    std::vector<words> patches; ///< "set TYPE PLACE VALUE" or "cut PLACE"
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

static void read_words(std::istringstream& line, words& read) {
    for (std::string word; line >> word;) {
        if (word == "x" && !read.empty() && line >> word)
            read.insert(read.end(), static_cast<std::size_t>(number(word) - 1), std::string(read.back()));
        else
            read.push_back(word);
    }
}

/// False when the line is none of a profile.
static bool read_line(std::istringstream& line, text_profile& profile) {
    static const std::set<std::string> kNames{"file", "function", "routine"},
        kWords{"blocks", "group2", "group3", "entry", "flags", "word", "address", "vtable", "version"};
    std::string key, word;
    line >> key;
    if (key.empty() || key[0] == '#')
        return true;
    if (key == "header") {
        while (line >> key && std::getline(line >> std::ws, word, key == "text" ? '\n' : ' '))
            profile.header.fields[key] = {word};
    } else if (key == "order") {
        profile.any_order = rest_of(line) == "any";
    } else if (key == "source") {
        profile.sources.push_back(rest_of(line));
    } else if (key == "record") {
        word = rest_of(line);
        profile.records.push_back({word == "64", {}});
        return word == "32" || word == "64";
    } else if (key == "set" || key == "cut") {
        read_words(line, profile.patches.emplace_back(1, key));
    } else if (profile.records.empty()) {
        return false;
    } else if (kNames.contains(key)) {
        profile.records.back().fields[key].push_back(rest_of(line));
    } else {
        read_words(line, profile.records.back().fields[key]);
        return kWords.contains(key);
    }
    return true;
}

static text_profile read_text(std::string_view text) {
    text_profile profile;
    std::istringstream input{std::string(text)};
    int line_number = 0;
    for (std::string line; std::getline(input, line);) {
        ++line_number;
        std::istringstream words_of_line(line);
        if (!read_line(words_of_line, profile))
            throw std::runtime_error("line " + std::to_string(line_number) + ": unknown: " + line);
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
        const bool placed = colon != block.npos;
        if (placed != (equals != block.npos) || placed != (blocks[0].find(':') != block.npos))
            throw std::runtime_error("all blocks are COUNT, or all are LINE:COLUMN=COUNT, but not: " + block);
        if (placed) {
            put_bytes(positions, number(block.substr(0, colon)), 4);
            put_bytes(positions, number(block.substr(colon + 1, equals - colon - 1)), 4);
        }
        put_counter(counters, block.substr(placed ? equals + 1 : 0), wide);
    }
}

/// The bytes behind the records, and what is known of them.
struct string_area {
    std::string bytes;
    std::uint64_t start = 0;                    ///< offset in the file
    std::map<std::string, std::uint64_t> files; ///< offsets of file names that the records share

    std::uint64_t add(const std::string& text) {
        const std::uint64_t offset = start + bytes.size();
        bytes += text + '\0';
        return offset;
    }
};

/// The record's bytes. Its strings go to `strings`.
static std::string record_bytes(const text_record& record, string_area& strings) {
    const bool wide = record.wide;
    const int width = wide ? 8 : 4;
    const bool shared = !strings.files.empty();
    const words blocks = record.all("blocks"), routines = record.all("routine");
    const words entries =
        record.fields.contains("entry") || blocks.empty() ? record.all("entry") : words{"0"};
    const std::string function = record.one("function", "");
    const std::uint64_t shared_function = shared ? strings.add(function) : 0;

    std::string body, positions;
    put_blocks(blocks, wide, body, positions);
    for (const char* group : {"group2", "group3"})
        for (const std::string& count : record.all(group))
            put_counter(body, count, wide);
    body.append(96 * record.all("group3").size(), '\0');
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string& routine = i < routines.size() ? routines[i] : function;
        put_bytes(body, shared && routine == function ? shared_function : strings.add(routine), width);
    }
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
    const std::string file = record.one("file", "");
    put_bytes(head, shared ? strings.files.at(file) : strings.add(file), width);
    put_bytes(head, shared ? shared_function : strings.add(function), width);
    put_bytes(head, field("address"), 8);
    put_bytes(head, field("vtable"), 8);
    const words vtable = record.all("vtable");
    put_bytes(head, vtable.size() < 2 ? 0 : strings.add(vtable[1]), width);
    return head + body + positions;
}

static std::size_t place_at(const std::string& text) {
    return static_cast<std::size_t>(number(text));
}

static void apply(const words& patch, const std::vector<std::size_t>& record_places, std::string& bytes) {
    static const std::map<std::string, int> kWidths{{"u8", 1}, {"u32", 4}, {"u64", 8}};
    const bool cut = patch[0] == "cut";
    const std::string& at = patch.at(cut ? 1 : 2);
    const std::size_t plus = at.find('+');
    const std::size_t place =
        at[0] == 'r' ? record_places.at(place_at(at.substr(1, plus - 1))) + place_at(at.substr(plus + 1))
                     : place_at(at);
    std::string value;
    if (!cut)
        put_bytes(value, number(patch.at(3)), kWidths.at(patch[1]));
    if (place + value.size() > bytes.size())
        throw std::runtime_error(at + " lies behind the end of the file");
    bytes.replace(place, cut ? bytes.npos : value.size(), value);
}

std::string compile_profile_text(std::string_view text) {
    const text_profile profile = read_text(text);

    // The records are made twice: their sizes, and with them the place of the strings, come from the first
    // pass.
    std::string bytes;
    string_area strings;
    std::vector<std::size_t> record_places;
    for (int pass = 0; pass < 2; ++pass) {
        bytes.clear();
        strings.bytes.clear();
        strings.files.clear();
        for (const std::string& source : profile.sources)
            strings.files.try_emplace(source, strings.add(source));
        record_places.clear();
        for (const std::uint64_t field :
             {std::uint64_t{0xDC0B}, number(profile.header.one("runs", "0")),
              std::uint64_t{profile.records.size()}, number(profile.header.one("word", "0"))})
            put_bytes(bytes, field, 4);
        bytes += profile.header.one("text", "").substr(0, 511);
        bytes.resize(528, '\0');
        std::string last;
        for (const text_record& record : profile.records) {
            const std::string key = record.one("file", "") + "'" + record.one("function", "") + "'";
            if (!profile.any_order && key < last)
                throw std::runtime_error("record " + key + " is out of order");
            last = key;
            record_places.push_back(bytes.size());
            bytes += record_bytes(record, strings);
        }
        strings.start = bytes.size();
    }
    bytes += strings.bytes;
    for (const words& patch : profile.patches)
        apply(patch, record_places, bytes);
    return bytes;
}
