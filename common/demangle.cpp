#include "common/demangle.h"

#include <cstdlib>
#include <cstring>
#include <cxxabi.h>

static char* demangled = nullptr;      ///< shared result buffer; the demangler may enlarge it
static std::size_t demangled_size = 0; ///< its capacity

const char* demangleName(const char* name, int /*flag*/, std::size_t* length) {
    // Deliberate: the option does not matter. A report with mangled C++ names helps nobody, so names are
    // always shown in their C++ form.
    *length = 0;
    if (!name || name[0] != '_' || name[1] != 'Z')
        return name;
    if (!demangled) {
        demangled_size = 4096;
        demangled = static_cast<char*>(std::malloc(demangled_size));
        if (!demangled)
            return name;
    }
    int status = 0;
    char* text = abi::__cxa_demangle(name, demangled, &demangled_size, &status);
    if (!text || status != 0)
        return name;
    demangled = text;
    *length = std::strlen(text) + 1;
    return text;
}
