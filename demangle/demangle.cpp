#include "demangle/demangle.h"
#include "common/fatal.h"
#include "demangle/demangle_bound.h"

#include <cstdlib>
#include <cstring>
#include <cxxabi.h>

static constexpr int kNoMemory = -1; ///< status of the demangler

static char* demangled = nullptr;      ///< shared result buffer; the demangler may enlarge it
static std::size_t demangled_size = 0; ///< its capacity

static constexpr std::size_t kLongestText = std::size_t{64} << 10; ///< longer ones help nobody
static constexpr std::size_t kLongestBound = 4 * kLongestText;     ///< bounds are generous

const char* demangleName(const char* name, int /*flag*/, std::size_t* length) {
    // Deliberate: the option does not matter. A report with mangled C++ names helps nobody, so names are
    // always shown in their C++ form.
    *length = 0;
    if (!name || name[0] != '_' || name[1] != 'Z')
        return name;
    if (!demangles_within(name, kLongestBound)) // a short name can stand for gigabytes of text
        return name;
    if (!demangled) {
        demangled_size = 4096;
        demangled = static_cast<char*>(std::malloc(demangled_size));
        if (!demangled) {
            // infeasible: begin
            pgt_OutOfMemory();
            return name;
            // infeasible: end
        }
    }
    int status = 0;
    char* text = abi::__cxa_demangle(name, demangled, &demangled_size, &status);
    if (!text || status != 0) {
        if (status == kNoMemory)
            pgt_OutOfMemory(); // infeasible
        return name;
    }
    demangled = text;
    const std::size_t text_length = std::strlen(text);
    if (text_length > kLongestText)
        return name;
    *length = text_length + 1;
    return text;
}
