#include "export/block_coverage.h"

#include "common/number_format.h"
#include "common/text_buffer.h"
#include "driver/run_state.h"
#include "profile/dpi_record.h"

#include <algorithm>
#include <cmath>

bool block_compare(const blocks& a, const blocks& b) {
    return a.line != b.line ? a.line < b.line : a.column < b.column;
}

void sort_blocks(block_buffer& buffer) {
    std::reverse(buffer.begin(), buffer.end());
    if (!std::is_sorted(buffer.begin(), buffer.end(), block_compare))
        std::stable_sort(buffer.begin(), buffer.end(), block_compare);
}

/// A count as it is written.
static std::int32_t written_count(double count) {
    // Deliberate: readers of the exports expect 32-bit numbers; counts from 2^31 on show their low 32 bits.
    const std::uint32_t low = static_cast<std::uint32_t>(DPI_count_to_u64(std::abs(count)));
    return static_cast<std::int32_t>(count < 0 ? 0 - low : low);
}

bool printTXT_bcov_full(std::FILE* stream, const block_buffer& buffer) {
    text_buffer out(stream);
    int instance = 0;
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        instance = i > 0 && buffer[i - 1].line == buffer[i].line ? instance + 1 : 1;
        out.put_number(instance);
        out.put('\t');
        out.put_number(buffer[i].line);
        out.put('\t');
        out.put_number(buffer[i].column);
        out.put('\t');
        out.put_number(written_count(buffer[i].count));
        out.put('\n');
    }
    return true;
}

static void put_block_head(text_buffer& out, const blocks& block) {
    out.put(R"(<BLOCK line=")");
    out.put_number(block.line);
    out.put(R"(" col=")");
    out.put_number(block.column);
    out.put("\">\n");
}

bool printXML_bcov_full(std::FILE* stream, const block_buffer& buffer) {
    text_buffer out(stream);
    int instance = 0;
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        const bool continues = i > 0 && buffer[i - 1].line == buffer[i].line;
        instance = continues ? instance + 1 : 1;
        if (!continues)
            put_block_head(out, buffer[i]);
        out.put(R"(<INSTANCE id=")");
        out.put_number(instance);
        out.put(R"(" freq=")");
        out.put_number(written_count(buffer[i].count));
        out.put("\">\n</INSTANCE>\n");
        if (i + 1 == buffer.size() || buffer[i + 1].line != buffer[i].line)
            out.put("</BLOCK>\n");
    }
    return true;
}

static void begin_file(const char* path) {
    if (outxml)
        std::fprintf(outxml, "<MODULE name=\"%s\">\n", path);
    if (outtxt)
        std::fprintf(outtxt, "file - %s\n", path);
}

static void begin_function(const char* name, std::uint64_t entry_count) {
    char freq[kNumberTextSize];
    u64_to_ascii_no_sep(freq, entry_count);
    if (outtxt)
        std::fprintf(outtxt, "function - %s\t%s\n", name, freq);
    if (outxml)
        std::fprintf(outxml, "<FUNCTION name=\"%s\" freq=\"%s\">\n", name, freq);
}

static void end_function(block_buffer& buffer) {
    sort_blocks(buffer);
    if (outtxt)
        printTXT_bcov_full(outtxt, buffer);
    if (outxml) {
        printXML_bcov_full(outxml, buffer);
        std::fputs("</FUNCTION>\n", outxml);
    }
}

static void write_missing_function(const char* name, std::int32_t line) {
    if (outtxt)
        std::fprintf(outtxt, "function - %s\t0\n", name);
    if (outxml)
        std::fprintf(outxml, "<FUNCTION name=\"%s\" freq=\"0\" line=\"%d\"></FUNCTION>\n", name, line);
}

static void end_file() {
    if (outxml)
        std::fputs("</MODULE>\n", outxml);
}

const block_sink block_export = {begin_file, begin_function, end_function, write_missing_function, end_file};
