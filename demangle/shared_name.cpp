#include "demangle/shared_name.h"

#include "demangle/mangled_name.h"

/// Whether the name can be one of those that change: most are not, which shows without reading them.
static bool may_change(std::string_view name) {
    if (name.find('I', 2) != name.npos) // in most names that may
        return true;
    constexpr std::string_view templates = "siod"; // "Ss" and the like stand for instances
    constexpr std::string_view variants = "01345I";
    for (std::size_t i = 2; i < name.size(); ++i) {
        const char next = i + 1 < name.size() ? name[i + 1] : '\0';
        if ((name[i] == 'S' && templates.find(next) != templates.npos) ||
            ((name[i] == 'C' || name[i] == 'D') && variants.find(next) != variants.npos))
            return true;
    }
    return false;
}

bool find_shared_name(std::string_view name, std::string* shared) {
    shared->assign(name);
    if (!name.starts_with("_Z") || !may_change(name))
        return false;
    NameOutline outline;
    outline.text.reserve(name.size());
    if (!read_name_outline(shared->c_str(), outline))
        return false;
    if (outline.variant != 0)
        (*shared)[outline.variant] = '2';
    if (outline.is_template)
        shared->swap(outline.text);
    return outline.is_template;
}

std::string name_without_parameters(const std::string& name) {
    NameOutline outline;
    return name.starts_with("_Z") && read_name_outline(name.c_str(), outline) ? outline.text : name;
}
