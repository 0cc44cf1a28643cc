#include "profile/module_list.h"

#include "common/fatal.h"
#include "common/file_ptr.h"
#include "common/message.h"
#include "demangle/demangle.h"
#include "driver/run_config.h"
#include "profile/component_sort.h"
#include "profile/spi_file.h"

#include <cstdio>
#include <cstring>

bool same_file(const COMP* a, const COMP* b) {
    return a->fileName == b->fileName || std::strcmp(a->fileName, b->fileName) == 0;
}

/// Source names are compared byte by byte with those of the dynamic profile, so they stay as they are.
static void NormalizeName(char* /*name*/) {}

/// Makes the COMP of a record. Consecutive records of one file share its name.
static COMP* make_component(const SPI_RECORD& record, const COMP* previous, checked_arena& memory) {
    COMP* comp = static_cast<COMP*>(memory.allocate(sizeof(COMP), "Components SPI"));
    const bool sameFile = previous && std::strcmp(previous->fileName, record.file_name.c_str()) == 0;
    comp->fileName = sameFile ? previous->fileName : memory.copy(record.file_name.c_str(), "comp->fileName");
    comp->procName = memory.copy(record.proc_name.c_str(), "comp->procName");
    comp->displayName = comp->procName;
    comp->line = record.line;
    comp->blockCount = record.block_count;
    comp->spiFlag = record.flag;
    comp->isFirstOfFile = sameFile ? 0 : 1;
    std::size_t length = 0;
    const char* name = demangleName(comp->procName, g_iDemangFlag, &length);
    if (length != 0 && std::strcmp(name, comp->procName) != 0)
        comp->displayName = memory.copy(name, "comp->displayName");
    return comp;
}

[[noreturn]] static void fail_corrupt(const char* spiFileName) {
    print_error("corrupt SPI file %s", spiFileName);
    pgt_Exit(1);
}

/// Reads the records of an open file into a list in file order.
static void read_components(std::FILE* file, const char* spiFileName, const component_filter& filter,
                            module_list& list) {
    SPI_STREAM stream(file);
    SPI_RECORD record;
    COMP* tail = nullptr;
    do {
        if (!PGOPTI_SPI_Read_Line_Header(stream, record))
            fail_corrupt(spiFileName);
        NormalizeName(record.file_name.data());
        if (filter && !filter(record.file_name.c_str(), record.proc_name.c_str(), record.proc_name.c_str()))
            continue;
        COMP* comp = make_component(record, tail, list.memory);
        (tail ? tail->next : list.head) = comp;
        tail = comp;
    } while (PGOPTI_SPI_Skip_Line(stream) && stream.peek() != EOF);
    if (std::ferror(file))
        fail_corrupt(spiFileName);
}

COMP* GetComponentList(const char* spiFileName, int* count, const component_filter& filter,
                       module_list& list) {
    list = module_list();
    file_ptr file(std::fopen(spiFileName, "r"));
    if (!file) {
        print_error("cannot open the SPI file, %s.", spiFileName);
        pgt_Exit(1);
    }
    read_components(file.get(), spiFileName, filter, list);
    list.head = SortComponents(list.head);
    if (std::fclose(file.release()) != 0)
        print_warning("couldn't close the SPI file %s", spiFileName);
    if (count)
        *count = getNumComponents(list.head);
    return list.head;
}

int getNumComponents(const COMP* head) {
    int count = 0;
    for (; head; head = head->next)
        ++count;
    return count;
}
