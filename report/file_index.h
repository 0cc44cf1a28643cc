// The index pages of covered and of uncovered files, one page for each sort order.
#pragma once

struct filename_list_node;

/// Writes the index of covered files. `name` is the logical page name, `project` may be null; `list` holds
/// `count` entries and stays as it is. All pages are attempted; false, after a message on standard error for
/// each, when one could not be created.
bool bCreateCovProfMain(const char* name, const char* ext, const char* project, int count,
                        filename_list_node* const* list);

/// The same for uncovered files.
bool bCreateUnCovProfMain(const char* name, const char* ext, const char* project, int count,
                          filename_list_node* const* list);

/// Writes the page of one sort order; `covered` tells the covered from the uncovered index. False, after a
/// message on standard error, when it cannot be created; an order without a key ends the run with exit
/// status 1.
bool bCreateCov(bool covered, int order, const char* name, const char* ext, const char* project, int count,
                filename_list_node* const* list);
