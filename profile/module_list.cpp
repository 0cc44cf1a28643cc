#include "profile/module_list.h"

#include "common/checked_alloc.h"
#include "common/demangle.h"
#include "common/fatal.h"
#include "driver/run_config.h"
#include "profile/component_sort.h"
#include "profile/spi_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

static void free_string(const char* text) {
    std::free(const_cast<char*>(text));
}

static void free_components(COMP* head) {
    while (head) {
        COMP* const next = head->next;
        if (head->displayName != head->procName)
            free_string(head->displayName);
        free_string(head->procName);
        if (head->ownsFileName)
            free_string(head->fileName);
        std::free(head);
        head = next;
    }
}

module_list::module_list(module_list&& other) noexcept
    : head_(std::exchange(other.head_, nullptr)), tail_(std::exchange(other.tail_, nullptr)),
      dropped_(std::exchange(other.dropped_, nullptr)) {}

module_list& module_list::operator=(module_list&& other) noexcept {
    std::swap(head_, other.head_);
    std::swap(tail_, other.tail_);
    std::swap(dropped_, other.dropped_);
    return *this;
}

module_list::~module_list() {
    free_components(head_);
    free_components(dropped_);
}

COMP* module_list::append() {
    COMP* const comp = static_cast<COMP*>(zalloc(sizeof(COMP), "Components SPI"));
    (tail_ ? tail_->next : head_) = comp;
    tail_ = comp;
    return comp;
}

void module_list::sort() {
    head_ = SortComponents(head_, &dropped_);
}

bool same_file(const COMP* a, const COMP* b) {
    return a->fileName == b->fileName || std::strcmp(a->fileName, b->fileName) == 0;
}

/// Source names are compared byte by byte with those of the dynamic profile, so they stay as they are.
static void NormalizeName(char* /*name*/) {}

/// Adds the COMP of a record. Consecutive records of one file share its name.
static void add_component(const SPI_RECORD& record, module_list& list) {
    const COMP* const previous = list.tail();
    COMP* const comp = list.append();
    const bool sameFile = previous && std::strcmp(previous->fileName, record.file_name.c_str()) == 0;
    comp->fileName = sameFile ? previous->fileName : copy_string(record.file_name.c_str(), "comp->fileName");
    comp->ownsFileName = !sameFile;
    comp->procName = copy_string(record.proc_name.c_str(), "comp->procName");
    comp->displayName = comp->procName;
    comp->line = record.line;
    comp->blockCount = record.block_count;
    comp->spiFlag = record.flag;
    comp->isFirstOfFile = sameFile ? 0 : 1;
    std::size_t length = 0;
    const char* name = demangleName(comp->procName, g_iDemangFlag, &length);
    if (length != 0 && std::strcmp(name, comp->procName) != 0)
        comp->displayName = copy_string(name, "comp->displayName");
}

[[noreturn]] static void fail_corrupt(const char* spiFileName) {
    std::fprintf(stderr, "ERROR: corrupt SPI file %s\n", spiFileName);
    pgt_Exit(1);
}

/// Reads the records of an open file into a list in file order.
static void read_components(std::FILE* file, const char* spiFileName, const component_filter& filter,
                            module_list& list) {
    SPI_STREAM stream(file);
    SPI_RECORD record;
    do {
        if (!PGOPTI_SPI_Read_Line_Header(stream, record))
            fail_corrupt(spiFileName);
        NormalizeName(record.file_name.data());
        if (!filter || filter(record.file_name.c_str(), record.proc_name.c_str(), record.proc_name.c_str()))
            add_component(record, list);
    } while (PGOPTI_SPI_Skip_Line(stream) && stream.peek() != EOF);
    if (std::ferror(file))
        fail_corrupt(spiFileName);
}

COMP* GetComponentList(const char* spiFileName, int* count, const component_filter& filter,
                       module_list& list) {
    list = module_list();
    std::FILE* file = std::fopen(spiFileName, "r");
    if (!file) {
        std::fprintf(stderr, "ERROR: cannot open the SPI file, %s.\n", spiFileName);
        pgt_Exit(1);
    }
    read_components(file, spiFileName, filter, list);
    list.sort();
    if (std::fclose(file) != 0)
        std::fprintf(stderr, "WARNING: couldn't close the SPI file %s\n", spiFileName);
    if (count)
        *count = getNumComponents(list.head());
    return list.head();
}

int getNumComponents(const COMP* head) {
    int count = 0;
    for (; head; head = head->next)
        ++count;
    return count;
}
