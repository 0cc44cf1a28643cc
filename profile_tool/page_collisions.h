// Source files whose pages would have one name.
#pragma once

#include <set>
#include <string>
#include <vector>

struct page_collision {
    std::string source;
    std::string other; ///< the one whose page it is, too
    std::string page;
};

/// Each source file that has a page of another one's name, ascending.
std::vector<page_collision> find_page_collisions(const std::set<std::string>& sources);
