// A module's frameset page and its lists of covered and uncovered functions, one page for each sort order.
#pragma once

class text_buffer;
struct func;

/// Writes every function list of `module` (its source path) and, when all of them succeeded, its frameset
/// page. Valid while the function table of coverage/function_table.h holds the module's functions, whose
/// order it changes. Returns false, after a message on standard error, when a page cannot be created.
bool bOutputFunctionCoverage(const char* module, const char* ext);

/// Sorts list[0 .. count-1] in place by `order` and writes its page. `covered` tells the covered from the
/// uncovered list. False, after a message on standard error, when the page cannot be created; an order
/// without a key ends the run with exit status 1.
bool bOutputFunctionCoverageFor(bool covered, int order, const char* module, const char* ext, func** list,
                                int count);

/// Writes a function's name as HTML text: '<' and '>' escaped, '@' left out together with decimal digits that
/// run from it to the end of the name. A null name writes nothing.
void printHTML(text_buffer& page, const char* name);
