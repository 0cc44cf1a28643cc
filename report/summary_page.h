// The coverage summary and the root page of the report.
#pragma once

/// Writes the summary page and the root frameset. `coveredName` and `uncoveredName` are the logical names of
/// the index pages, null for an index that does not exist; `project` may be null. Returns false, after a
/// message on standard error, when a page cannot be created.
bool bCreateSummary(const char* project, const char* rootName, const char* summaryName,
                    const char* coveredName, const char* uncoveredName, const char* ext);
