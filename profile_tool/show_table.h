// A dynamic profile as a table.
//
//        entered    covered     blocks  function  file
//             12          3          4  queue_push  src/queue.c
//
// one line for each record, in their order; C++ names demangled.
#pragma once

#include "common/text_buffer.h"
#include "profile/dpi_cursor.h"

/// False when a record cannot be read; the cursor's error() tells.
bool show_table(DPI_CURSOR& cursor, text_buffer& out);
