#include "profile_tool/show_table.h"

#include "common/printable.h"
#include "demangle/demangle.h"
#include "profile/dpi_content.h"

#include <string>

static void put_right(text_buffer& out, std::string_view text, std::size_t width) {
    out.fill(' ', width > text.size() ? width - text.size() : 0);
    out.put(text);
}

static void put_function(const DPI_CURSOR& cursor, text_buffer& out) {
    const std::string function(cursor.function_name());
    std::size_t length = 0;
    out.put(printable(demangleName(function.c_str(), 0, &length)));
    out.put("  ");
    out.put(printable(cursor.file_name()));
    out.put('\n');
}

bool show_table(DPI_CURSOR& cursor, text_buffer& out) {
    out.put("             entered    covered     blocks  function  file\n");
    while (cursor.next()) {
        const DPI_RECORD record = cursor.record();
        put_right(out, std::to_string(DPI_exact_entry_count(record)), 20);
        put_right(out, std::to_string(DPI_covered_blocks(record)), 11);
        put_right(out, std::to_string(DPI_block_count_get(record)), 11);
        out.put("  ");
        put_function(cursor, out);
    }
    return cursor.error().empty();
}
