#include "profile/line_order.h"

#include "profile/module_list.h"

#include <algorithm>

COMP* first_func_line = nullptr;
std::vector<COMP*> funcs_by_line;

void order_func(COMP* first) {
    funcs_by_line.clear();
    for (COMP* comp = first; comp && same_file(comp, first); comp = comp->next)
        funcs_by_line.push_back(comp);
    // Inserting each routine in front of the first one whose line is not less puts equal lines in reverse
    // order.
    std::reverse(funcs_by_line.begin(), funcs_by_line.end());
    std::stable_sort(funcs_by_line.begin(), funcs_by_line.end(),
                     [](const COMP* a, const COMP* b) { return a->line < b->line; });
    for (std::size_t i = 0; i < funcs_by_line.size(); ++i) {
        funcs_by_line[i]->nextByLine = i + 1 < funcs_by_line.size() ? funcs_by_line[i + 1] : nullptr;
        funcs_by_line[i]->firstByLine = funcs_by_line[0];
    }
    first_func_line = funcs_by_line[0];
}
