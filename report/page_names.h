// Names of the report's files: a logical page name becomes a file name on disk and a link between pages.
//
// Every builder returns one shared buffer, valid until the next call of any of them: use a result at once and
// never hold two. All return null for a null name. `ext` is the pages' extension, "html".
#pragma once

#include <cstddef>

/// The report directory, and the separator between it and a page.
#define REPORT_DIR "CodeCoverage"

/// The name with its last "." and every "\", "/" and ":" turned into "_", "." and `ext`, in upper case: a
/// file of the working directory, or a link between two pages of the report directory.
const char* getHTMLname(const char* name, const char* ext);

/// getHTMLname of "name_ver".
const char* getVerHTMLname(const char* name, int ver, const char* ext);

/// getHTMLname of "name_SRC": a link to a module's annotated listing.
const char* getSrcHTMLname(const char* name, const char* ext);

/// "CodeCoverage/" and getHTMLname of the name. The directory keeps its case.
const char* getDirHTMLname(const char* name, const char* ext);

/// As getDirHTMLname, for frame sources of the root page.
const char* getDirSlashHTMLname(const char* name, const char* ext);

/// getDirHTMLname of "name_SRC".
const char* getDirSrcHTMLname(const char* name, const char* ext);

/// "CodeCoverage/" and getVerHTMLname.
const char* getDirVerHTMLname(const char* name, int ver, const char* ext);

/// As getDirVerHTMLname, but always version 4, the page that is shown first.
const char* getDirSlashVerHTMLname(const char* name, int ver, const char* ext);

/// The workers behind the directory forms.
const char* genDirHTMLname(const char* name, const char* ext, const char* separator);
const char* genDirVerHTMLname(const char* name, int ver, const char* ext, const char* separator);

/// In place: every "\", "/" and ":" becomes "_". Null or empty strings are left alone.
void hyphenize(char* s);

/// In place: ASCII letters in upper case.
void capitalize(char* s);

/// The last occurrence of `c`, or null (also for a null or empty string).
char* revPos(char* s, char c);

/// The shared buffer with room for at least `size` bytes: 4096 at first, then the smallest power of two above
/// the request. Null for a size below 1, or after "ERROR: out of memory! requested size = %d" on standard
/// output when it cannot grow.
char* getBuf(int size);
