#include "report/page_names.h"

#include "common/fatal.h"

#include <bit>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

static char* nameBuffer = nullptr; ///< the shared result of all builders; allocated on first use, never freed
static std::int64_t nameBufferSize = 4096; ///< its capacity; only grows

constexpr std::size_t kEndSize = 2;      ///< room for the "." in front of the extension and the NUL
constexpr std::size_t kVersionSize = 13; ///< room for "_" and a number

/// 2 raised to the bit length of `n`: the smallest power of two strictly greater than it.
static std::int64_t nextPower2(int n) {
    return std::int64_t{1} << std::bit_width(static_cast<unsigned int>(n));
}

char* getBuf(int size) {
    if (size < 1)
        return nullptr;
    if (size > nameBufferSize) {
        std::free(nameBuffer);
        nameBuffer = nullptr;
        nameBufferSize = nextPower2(size);
    }
    if (!nameBuffer)
        nameBuffer = static_cast<char*>(std::malloc(static_cast<std::size_t>(nameBufferSize)));
    if (!nameBuffer)
        std::printf("ERROR: out of memory! requested size = %lld\n", static_cast<long long>(nameBufferSize));
    return nameBuffer;
}

/// getBuf for a name of any length; ends the run after a message where no buffer can be had.
static char* buffer_for(std::size_t size) {
    char* buffer = nullptr;
    if (size <= INT_MAX)
        buffer = getBuf(static_cast<int>(size));
    else
        std::printf("ERROR: out of memory! requested size = %zu\n", size);
    if (!buffer)
        pgt_Exit(1);
    return buffer;
}

void hyphenize(char* s) {
    if (!s)
        return;
    while ((s = std::strpbrk(s, "\\/:")))
        *s++ = '_';
}

void capitalize(char* s) {
    if (!s)
        return;
    for (; *s; ++s)
        if (*s >= 'a' && *s <= 'z')
            *s = static_cast<char>(*s - 'a' + 'A');
}

char* revPos(char* s, char c) {
    return s && *s ? std::strrchr(s, c) : nullptr;
}

/// Rewrites the page name at `text` in place and appends "." and `ext`, all in upper case. Deliberate: names
/// that differ only in what is rewritten become one file, and the later page overwrites the earlier. A page's
/// name follows from that of its source alone, so that links from elsewhere stay valid.
static void transform(char* text, const char* ext) {
    if (char* dot = revPos(text, '.'))
        *dot = '_';
    hyphenize(text);
    char* end = text + std::strlen(text);
    *end = '.';
    std::strcpy(end + 1, ext);
    capitalize(text);
}

const char* getHTMLname(const char* name, const char* ext) {
    if (!name)
        return nullptr;
    char* buffer = buffer_for(std::strlen(name) + std::strlen(ext) + kEndSize);
    std::strcpy(buffer, name);
    transform(buffer, ext);
    return buffer;
}

const char* getVerHTMLname(const char* name, int ver, const char* ext) {
    if (!name)
        return nullptr;
    const std::size_t size = std::strlen(name) + std::strlen(ext) + kVersionSize + kEndSize;
    char* buffer = buffer_for(size);
    std::snprintf(buffer, size, "%s_%d", name, ver);
    transform(buffer, ext);
    return buffer;
}

const char* getSrcHTMLname(const char* name, const char* ext) {
    if (!name)
        return nullptr;
    return getHTMLname((std::string(name) + "_SRC").c_str(), ext);
}

const char* genDirHTMLname(const char* name, const char* ext, const char* separator) {
    if (!name)
        return nullptr;
    const std::size_t size =
        std::strlen(REPORT_DIR) + std::strlen(separator) + std::strlen(name) + std::strlen(ext) + kEndSize;
    char* buffer = buffer_for(size);
    std::strcpy(buffer, REPORT_DIR);
    std::strcat(buffer, separator);
    char* const page = buffer + std::strlen(buffer);
    std::strcpy(page, name);
    transform(page, ext);
    return buffer;
}

const char* genDirVerHTMLname(const char* name, int ver, const char* ext, const char* separator) {
    if (!name)
        return nullptr;
    const std::size_t size = std::strlen(REPORT_DIR) + std::strlen(separator) + std::strlen(name) +
                             kVersionSize + std::strlen(ext) + kEndSize;
    char* buffer = buffer_for(size);
    std::snprintf(buffer, size, "%s%s%s_%d", REPORT_DIR, separator, name, ver);
    transform(buffer + std::strlen(REPORT_DIR) + std::strlen(separator), ext);
    return buffer;
}

const char* getDirHTMLname(const char* name, const char* ext) {
    return genDirHTMLname(name, ext, "/");
}

const char* getDirSlashHTMLname(const char* name, const char* ext) {
    return genDirHTMLname(name, ext, "/");
}

const char* getDirSrcHTMLname(const char* name, const char* ext) {
    if (!name)
        return nullptr;
    return getDirHTMLname((std::string(name) + "_SRC").c_str(), ext);
}

const char* getDirVerHTMLname(const char* name, int ver, const char* ext) {
    return genDirVerHTMLname(name, ver, ext, "/");
}

const char* getDirSlashVerHTMLname(const char* name, int ver, const char* ext) {
    // Deliberate: the root page always frames the page sorted by ascending name, whatever is asked for, so
    // that every report opens in the same order.
    static_cast<void>(ver);
    return genDirVerHTMLname(name, 4, ext, "/");
}
