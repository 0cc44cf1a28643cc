#include "analysis/function_filter.h"

#include <cstring>

/// Routines of the compiler's own start-up code, by the beginnings of their names.
static const char* const ExcludedFunctions[] = {"___sti__", "__$U"};

bool isSubstring(const char* prefix, const char* text) {
    return prefix && text && std::strncmp(prefix, text, std::strlen(prefix)) == 0;
}

bool excludeFunc(const char* name, std::int32_t line) {
    if (!name || line == 0)
        return true;
    for (const char* prefix : ExcludedFunctions)
        if (isSubstring(prefix, name))
            return true;
    return false;
}
