// A dynamic profile as JSON, one record a line, the keys of each object in order.
//
//   {"format":1,"records":[
//   {"blocks":[{"column":1,"count":12,"line":41},...],"entries":[0],"file":"src/queue.c",
//    "function":"queue_push","second":[],"third":[],"width":64},     (on one line)
//   ...
//   ],"runs":3,"text":"","word":0}
//
// Blocks of a record without line information have no column and no line. Counts of 64-bit records are exact
// integers; those of 32-bit records are numbers, or null where they are none or not finite. Bytes of names
// that are not UTF-8 become U+FFFD.
#pragma once

#include "common/text_buffer.h"
#include "profile/dpi_cursor.h"

/// False when a record cannot be read; the cursor's error() tells.
bool show_json(DPI_CURSOR& cursor, text_buffer& out);
