// The annotated source listing of a module.
#pragma once

/// Writes the listing of the current source file of g_cl and then its function lists. Returns false, after a
/// message, when the source cannot be read or a page cannot be created.
bool bOutputLineCoverage(const char* ext);
