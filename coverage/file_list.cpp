#include "coverage/file_list.h"

#include "common/fatal.h"
#include "common/source_file.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

file_list::~file_list() {
    for (filename_list_node* entry = head_; entry;) {
        filename_list_node* const next = entry->next;
        std::free(entry->name);
        std::free(entry);
        entry = next;
    }
}

bool file_list::add(const char* name) {
    if (by_name_.count(name) != 0)
        return true;
    filename_list_node* entry = static_cast<filename_list_node*>(std::calloc(1, sizeof(filename_list_node)));
    char* copy = strdup(name);
    if (!entry || !copy) {
        // infeasible: begin
        std::printf("Error - out of memory!! (coverage_list::bAddFilename)\n");
        pgt_OutOfMemory();
        std::free(entry);
        std::free(copy);
        return false;
        // infeasible: end
    }
    entry->name = copy;
    (tail_ ? tail_->next : head_) = entry;
    tail_ = entry;
    std::string_view text;
    entry->flags = load_source(name, &text) ? std::uint32_t{FILE_EXISTS} : 0;
    by_name_.emplace(copy, entry);
    return true;
}

int uiGetFilenamesForFlag(filename_list_node* head, std::uint32_t flag, int* pNum,
                          filename_list_node*** pArray) {
    int count = 0;
    for (const filename_list_node* entry = head; entry; entry = entry->next)
        count += (entry->flags & flag) != 0 ? 1 : 0;
    *pArray = nullptr;
    if (count > 0) {
        *pArray = static_cast<filename_list_node**>(
            std::malloc(static_cast<std::size_t>(count) * sizeof(filename_list_node*)));
        if (!*pArray) {
            // infeasible: begin
            std::printf("Error - Not enough memory!! (file_list_node::uiGetFilenames)\n");
            return -1;
            // infeasible: end
        }
    }
    int filled = 0;
    for (filename_list_node* entry = head; entry; entry = entry->next)
        if ((entry->flags & flag) != 0)
            (*pArray)[filled++] = entry;
    *pNum = count;
    return count;
}
