// A dynamic profile as the text that tests write profiles in (tests/tools/profile_text.h tells its form). The
// writer of the tests makes the same profile of it, byte by byte, unless comments at its head say what stands
// in the way.
#pragma once

#include "common/text_buffer.h"
#include "profile/dpi_cursor.h"

#include <string>

/// The profile at the cursor, of which no record was read yet. False when it cannot be read; the cursor's
/// error() tells.
bool show_text(DPI_CURSOR& cursor, text_buffer& out);
