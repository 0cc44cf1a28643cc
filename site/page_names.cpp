#include "site/page_names.h"

#include <cstdint>
#include <sha2.h>
#include <sys/types.h>

constexpr std::size_t kLongestStem = 100; ///< keeps rows of lists short, and names within any file system
constexpr std::size_t kKeptOfStem = 50;
constexpr std::size_t kDigestDigits = 40;

static bool is_kept(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
}

static void append_hex(std::string& text, unsigned char byte) {
    static const char digits[] = "0123456789abcdef";
    text += digits[byte >> 4];
    text += digits[byte & 15];
}

static std::string encoded(std::string_view path) {
    std::string stem;
    for (const char c : path) {
        // Servers and archivers treat files specially whose names begin with these.
        const bool hidden = stem.empty() && (c == '.' || c == '_' || c == '-' || c == '/');
        if (is_kept(c) && !hidden) {
            stem += c;
        } else if (c == '/' && !hidden) {
            stem += '~';
        } else if (c >= 'A' && c <= 'Z') {
            stem += '=';
            stem += static_cast<char>(c - 'A' + 'a');
        } else {
            stem += "==";
            append_hex(stem, static_cast<unsigned char>(c));
        }
    }
    return stem;
}

static std::string digest_of(std::string_view path) {
    SHA2_CTX context;
    std::uint8_t digest[SHA256_DIGEST_LENGTH];
    SHA256Init(&context);
    SHA256Update(&context, reinterpret_cast<const std::uint8_t*>(path.data()), path.size());
    SHA256Final(digest, &context);
    std::string text;
    for (std::size_t i = 0; i < kDigestDigits / 2; ++i)
        append_hex(text, digest[i]);
    return text;
}

std::string page_stem(std::string_view path) {
    const std::string stem = encoded(path);
    return stem.size() <= kLongestStem ? stem : stem.substr(0, kKeptOfStem) + "==x" + digest_of(path);
}

static std::string page_in(const char* folder, const std::string& stem) {
    std::string name = folder;
    return name.append(stem).append(".html");
}

std::string source_page_name(std::string_view path) {
    return page_in("s/", page_stem(path));
}

std::string directory_page_name(std::string_view path, std::size_t page) {
    std::string stem = path.empty() ? "==top" : page_stem(path);
    if (page > 1)
        stem.append("==p").append(std::to_string(page));
    return page_in("d/", stem);
}

std::string list_page_name(std::string_view stem, std::size_t page) {
    std::string name(stem);
    if (page > 1)
        name.append("-").append(std::to_string(page));
    return name.append(".html");
}
