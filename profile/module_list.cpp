#include "profile/module_list.h"

#include "common/checked_alloc.h"
#include "common/fatal.h"
#include "common/hoare_sort.h"
#include "coverage/files_of_interest.h"
#include "demangle/demangle.h"
#include "driver/run_config.h"
#include "profile/spi_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

COMP* first_func_line = nullptr;
std::vector<COMP*> funcs_by_line;

static COMP* dropped_components = nullptr; ///< duplicates; other records may share their file names

bool same_file(const COMP* a, const COMP* b) {
    return a->fileName == b->fileName || std::strcmp(a->fileName, b->fileName) == 0;
}

/// Source names are compared byte by byte with those of the dynamic profile, so they stay as they are.
static void NormalizeName(char* /*name*/) {}

/// Makes the COMP of a record. Consecutive records of one file share its name.
static COMP* make_component(const SPI_RECORD& record, const COMP* previous) {
    COMP* comp = static_cast<COMP*>(zalloc(sizeof(COMP), "Components SPI"));
    const bool sameFile = previous && std::strcmp(previous->fileName, record.file_name.c_str()) == 0;
    comp->fileName = sameFile ? previous->fileName : copy_string(record.file_name.c_str(), "comp->fileName");
    comp->procName = copy_string(record.proc_name.c_str(), "comp->procName");
    comp->line = record.line;
    comp->blockCount = record.block_count;
    comp->spiFlag = record.flag;
    comp->isFirstOfFile = sameFile ? 0 : 1;
    std::size_t length = 0;
    const char* name = demangleName(comp->procName, g_iDemangFlag, &length);
    comp->displayName = comp->procName;
    if (length != 0 && std::strcmp(name, comp->procName) != 0)
        comp->displayName = copy_string(name, "comp->displayName");
    return comp;
}

[[noreturn]] static void fail_corrupt(const char* spiFileName) {
    std::fprintf(stderr, "ERROR: corrupt SPI file %s\n", spiFileName);
    pgt_Exit(1);
}

/// Reads all records of an open file into a list in file order.
static COMP* read_components(std::FILE* file, const char* spiFileName) {
    SPI_STREAM stream(file);
    SPI_RECORD record;
    COMP* head = nullptr;
    COMP* tail = nullptr;
    do {
        if (!PGOPTI_SPI_Read_Line_Header(stream, record))
            fail_corrupt(spiFileName);
        NormalizeName(record.file_name.data());
        if (isInComponents(record.file_name.c_str(), record.proc_name.c_str(), record.proc_name.c_str())) {
            COMP* comp = make_component(record, tail);
            (tail ? tail->next : head) = comp;
            tail = comp;
        }
    } while (PGOPTI_SPI_Skip_Line(stream) && stream.peek() != EOF);
    if (std::ferror(file))
        fail_corrupt(spiFileName);
    return head;
}

COMP* GetComponentList(const char* spiFileName, int* count) {
    std::FILE* file = std::fopen(spiFileName, "r");
    if (!file) {
        std::fprintf(stderr, "ERROR: cannot open the SPI file, %s.\n", spiFileName);
        pgt_Exit(1);
    }
    COMP* head = SortComponents(read_components(file, spiFileName));
    if (std::fclose(file) != 0)
        std::fprintf(stderr, "WARNING: couldn't close the SPI file %s\n", spiFileName);
    if (count)
        *count = getNumComponents(head);
    return head;
}

int getNumComponents(const COMP* head) {
    int count = 0;
    for (; head; head = head->next)
        ++count;
    return count;
}

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
                comp->next = dropped_components;
                dropped_components = comp;
                continue;
            }
            reference->isAmbiguous = 1;
            comp->isAmbiguous = 1;
        }
        reference = comp;
        kept = comp;
    }
}

COMP* SortComponents(COMP* head) {
    const int count = getNumComponents(head);
    if (count == 0)
        return nullptr;
    COMP** array =
        static_cast<COMP**>(pmalloc(static_cast<std::size_t>(count) * sizeof(COMP*), "Components Array"));
    int filled = 0;
    for (COMP* comp = head; comp; comp = comp->next)
        array[filled++] = comp;
    QuickSortComponents(array, 0, count - 1);
    for (int i = 0; i + 1 < count; ++i)
        array[i]->next = array[i + 1];
    array[count - 1]->next = nullptr;
    head = array[0];
    eiliminateRedundantComponents(head);
    std::free(array);
    return head;
}

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
