// Input: a few decisions and a name. The page names, the escaped text and everything that goes through a text
// buffer are compared with plain string building.
#include "report/page_names.h"

#include "common/number_format.h"
#include "common/text_buffer.h"
#include "fuzz/harness.h"
#include "report/function_lists.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

static std::string page_of(std::string name) {
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos)
        name[dot] = '_';
    for (char& c : name)
        if (c == '/' || c == '\\' || c == ':')
            c = '_';
    name += ".html";
    for (char& c : name)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 32);
    return name;
}

static void check_names(const std::string& text, int ver) {
    const char* name = text.c_str();
    const std::string number = "_" + std::to_string(ver);
    const std::string directory = "CodeCoverage/";
    require(getHTMLname(name, "html") == page_of(text), "getHTMLname");
    require(getVerHTMLname(name, ver, "html") == page_of(text + number), "getVerHTMLname");
    require(getSrcHTMLname(name, "html") == page_of(text + "_SRC"), "getSrcHTMLname");
    require(getDirHTMLname(name, "html") == directory + page_of(text), "getDirHTMLname");
    require(getDirSlashHTMLname(name, "html") == directory + page_of(text), "getDirSlashHTMLname");
    require(getDirSrcHTMLname(name, "html") == directory + page_of(text + "_SRC"), "getDirSrcHTMLname");
    require(getDirVerHTMLname(name, ver, "html") == directory + page_of(text + number), "getDirVerHTMLname");
    require(getDirSlashVerHTMLname(name, ver, "html") == directory + page_of(text + "_4"),
            "getDirSlashVerHTMLname");
    const std::size_t slash = text.rfind('/');
    require(brief(name) == name + (slash == std::string::npos ? 0 : slash + 1), "brief");
}

/// A function's name as a page shows it.
static std::string shown_name(std::string name) {
    std::string shown;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '@')
            shown += escaped(name.substr(i, 1));
        else if (name.find_first_not_of("0123456789", i + 1) == std::string::npos)
            break;
    }
    return shown;
}

/// Writes a piece to the page; the same as plain text.
static std::string write_piece(byte_script& script, text_buffer& page) {
    char text[512];
    switch (script.below(7)) {
    case 0: {
        const std::string_view piece = script.take(script.byte());
        page.put_escaped(piece);
        return escaped(piece);
    }
    case 1: {
        const std::size_t count = std::size_t{script.number()} % 140000;
        page.fill('x', count);
        return std::string(count, 'x');
    }
    case 2: {
        const std::int32_t value = static_cast<std::int32_t>(script.number());
        page.put_number(value);
        return std::to_string(value);
    }
    case 3: {
        const std::uint32_t value = script.number();
        page.put_padded(value, 6);
        std::snprintf(text, sizeof text, "%6u", value);
        return text;
    }
    case 4: {
        const std::int32_t part = static_cast<std::int32_t>(script.number());
        const double value = percent(part, static_cast<std::int32_t>(script.number()));
        page.put_percent(value);
        std::snprintf(text, sizeof text, "%6.2f", value);
        return text;
    }
    case 5: {
        const std::string piece(std::size_t{script.byte()} * 600, 'y');
        page.put(piece);
        return piece;
    }
    default: {
        const std::string name(std::string(script.take(script.byte())).c_str());
        printHTML(page, name.c_str());
        return shown_name(name);
    }
    }
}

static void check_text(byte_script script) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&bytes, &size);
    std::string expected;
    {
        const auto page = std::make_unique<text_buffer>(stream);
        for (int pieces = 0; !script.empty() && pieces < 64; ++pieces)
            expected += write_piece(script, *page);
    }
    std::fclose(stream);
    require(std::string_view(bytes, size) == expected, "the text of a page");
    std::free(bytes);
}

static void check_numbers(std::int64_t value) {
    char text[kNumberTextSize];
    i64_to_ascii(text, value);
    std::string digits;
    for (const char* p = text; *p; ++p)
        if (*p != ',')
            digits += *p;
    require(digits == std::to_string(value), "digits of a number");
    const std::size_t start = value < 0 ? 1 : 0;
    require(std::strlen(text) - start == digits.size() - start + (digits.size() - start - 1) / 3,
            "separators of a number");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    byte_script script(data, size);
    const int ver = static_cast<int>(script.number());
    std::int64_t value = 0;
    const std::string_view number = script.take(8);
    if (!number.empty())
        std::memcpy(&value, number.data(), number.size());
    const bool text = script.flag();
    run_in_scratch([&] {
        if (text) {
            check_text(script);
            check_numbers(value == INT64_MIN ? 0 : value);
        } else {
            const std::size_t repeat = std::size_t{script.byte()} + 1;
            const std::string piece(std::string(script.rest()).c_str());
            std::string name;
            for (std::size_t i = 0; i < repeat && name.size() < 20000; ++i)
                name += piece;
            check_names(name, ver);
        }
    });
    return 0;
}
