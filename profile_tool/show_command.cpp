#include "profile_tool/show_command.h"

#include "common/text_buffer.h"
#include "profile/dpi_cursor.h"
#include "profile_tool/show_json.h"
#include "profile_tool/show_table.h"
#include "profile_tool/show_text.h"
#include "profile_tool/tool_message.h"

#include <cstdio>

void show_profile(const tool_options& options) {
    const std::string& path = options.profiles.front();
    DPI_CURSOR cursor;
    if (!cursor.open(path))
        tool_error(cursor.error());
    text_buffer out(stdout);
    bool shown = false;
    switch (options.form) {
    case show_form::text:
        shown = show_text(cursor, out);
        break;
    case show_form::functions:
        shown = show_table(cursor, out);
        break;
    case show_form::json:
        shown = show_json(cursor, out);
        break;
    }
    out.flush();
    if (!shown)
        tool_error(cursor.error());
}
