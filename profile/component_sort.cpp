#include "profile/component_sort.h"

#include "common/checked_alloc.h"
#include "common/hoare_sort.h"
#include "profile/module_list.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

int compareComponets(const COMP* a, const COMP* b) {
    if (a->fileName != b->fileName) {
        const int order = std::strcmp(a->fileName, b->fileName);
        if (order != 0)
            return order;
    }
    if (a->displayName && b->displayName) {
        const int order = std::strcmp(a->displayName, b->displayName);
        if (order != 0)
            return order;
    }
    return std::strcmp(a->procName, b->procName);
}

static void swapComponents(COMP** array, int i, int j) {
    std::swap(array[i], array[j]);
}

static int PartitionComponents(COMP** array, int low, int high) {
    const auto compare = [](const COMP* a, const COMP* b) {
        const int order = compareComponets(a, b);
        return order > 0 ? -1 : order < 0 ? 1 : 0;
    };
    return hoare_partition(array, low, high, 1, compare, swapComponents);
}

static void QuickSortComponents(COMP** array, int low, int high) {
    const auto before = [](const COMP* a, const COMP* b) { return compareComponets(a, b) < 0; };
    hoare_quicksort(array, low, high, PartitionComponents, before, sort_patience(low, high));
}

void eiliminateRedundantComponents(COMP* head) {
    COMP* kept = nullptr;      // the last record that stays in the list
    COMP* reference = nullptr; // the record that the next one is compared with
    COMP* next = nullptr;
    for (COMP* comp = head; comp; comp = next) {
        next = comp->next;
        const bool first = !kept || !same_file(kept, comp);
        comp->isFirstOfFile = first ? 1 : 0;
        if (!first && reference->line == comp->line && reference->displayName && comp->displayName &&
            std::strcmp(reference->displayName, comp->displayName) == 0) {
            if (std::strcmp(reference->procName, comp->procName) == 0) {
                kept->next = comp->next;
                continue;
            }
            reference->isAmbiguous = 1;
            comp->isAmbiguous = 1;
        }
        reference = comp;
        kept = comp;
    }
}

namespace {

struct memory_release {
    void operator()(void* memory) const { std::free(memory); }
};

} // namespace

COMP* SortComponents(COMP* head) {
    const int count = getNumComponents(head);
    if (count == 0)
        return nullptr;
    const std::size_t size = static_cast<std::size_t>(count) * sizeof(COMP*);
    const std::unique_ptr<void, memory_release> memory(pmalloc(size, "Components Array"));
    COMP** const array = static_cast<COMP**>(memory.get());
    int filled = 0;
    for (COMP* comp = head; comp; comp = comp->next)
        array[filled++] = comp;
    QuickSortComponents(array, 0, count - 1);
    for (int i = 0; i + 1 < count; ++i)
        array[i]->next = array[i + 1];
    array[count - 1]->next = nullptr;
    head = array[0];
    eiliminateRedundantComponents(head);
    return head;
}
