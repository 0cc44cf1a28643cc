// The annotated source listing of a module.
#pragma once

/// Address of the first '^' from `p` on in the line, or null when the line ends before; null for null.
const char* posNextMarker(const char* p);

/// Writes the listing of the current source file of g_cl and then its function lists. Returns false, after a
/// message, when the source cannot be read or a page cannot be created.
bool bOutputLineCoverage(const char* ext);
