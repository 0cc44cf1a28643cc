#include "profile_tool/page_collisions.h"

#include "report/page_names.h"

#include <unordered_map>

/// Pages of a source file with its listing and its lists of functions, by what follows the name of its own.
static std::vector<std::string> page_endings() {
    std::vector<std::string> endings = {"_SRC"};
    for (int order = 0; order < 10; ++order)
        for (const char* kind : {"_CVRDFNCS_", "_UNCVRDFNCS_"})
            endings.push_back(kind + std::to_string(order));
    return endings;
}

std::vector<page_collision> find_page_collisions(const std::set<std::string>& sources) {
    constexpr std::size_t extension = 5;                        // ".HTML"
    std::unordered_map<std::string, const std::string*> owners; // of the first pages, without extension
    std::vector<page_collision> collisions;
    for (const std::string& source : sources) {
        const std::string page = getHTMLname(source.c_str(), "html");
        const auto [owner, is_new] = owners.try_emplace(page.substr(0, page.size() - extension), &source);
        if (!is_new)
            collisions.push_back({source, *owner->second, page});
    }
    const std::vector<std::string> endings = page_endings();
    for (const std::string& source : sources) {
        std::string stem = getHTMLname(source.c_str(), "html");
        stem.resize(stem.size() - extension);
        for (const std::string& ending : endings) {
            const auto owner = owners.find(stem + ending);
            if (owner != owners.end())
                collisions.push_back({source, *owner->second, owner->first + ".HTML"});
        }
    }
    return collisions;
}
