#include "profile/line_order.h"

#include "profile/module_list.h"

#include <algorithm>
#include <vector>

COMP* first_func_line = nullptr;

void order_func(COMP* first) {
    std::vector<COMP*> routines;
    for (COMP* comp = first; comp && same_file(comp, first); comp = comp->next)
        routines.push_back(comp);
    // Inserting each routine in front of the first one whose line is not less puts equal lines in reverse
    // order.
    std::reverse(routines.begin(), routines.end());
    std::stable_sort(routines.begin(), routines.end(),
                     [](const COMP* a, const COMP* b) { return a->line < b->line; });
    for (std::size_t i = 0; i < routines.size(); ++i) {
        routines[i]->nextByLine = i + 1 < routines.size() ? routines[i + 1] : nullptr;
        routines[i]->firstByLine = routines[0];
    }
    first_func_line = routines[0];
}

std::vector<std::int32_t> chained_lines() {
    std::vector<std::int32_t> lines;
    for (const COMP* comp = first_func_line; comp; comp = comp->nextByLine)
        lines.push_back(comp->line);
    return lines;
}
