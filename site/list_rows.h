// Rows of files, directories and functions, as lists have them. Each is at most about 300 bytes, so that a
// page of kRowsOfPage rows stays small whatever the names are.
#pragma once

#include "common/text_buffer.h"
#include "site/site_model.h"

#include <cstddef>
#include <string_view>

constexpr std::size_t kRowsOfPage = 1000;

/// `within`: the directory that the name is shown from; "" for the whole name.
void put_file_row(text_buffer& out, const site_file_entry& file, std::string_view within,
                  std::string_view up);
void put_directory_row(text_buffer& out, const site_directory& directory, std::string_view within,
                       std::string_view up);
void put_function_row(text_buffer& out, const site_function& function, const site_file_entry& file,
                      std::string_view up);

/// Links to the pages of a list of `pages` pages, of which this is page `page`; nothing for a single one.
/// `name` gives the name of a page.
template <typename Name>
void put_pager(text_buffer& out, std::size_t page, std::size_t pages, std::string_view up, Name name);

/// True for the pages that a list links to: the neighbours, and further ones in ever larger steps, so that a
/// thousand pages stay small and each is a few steps away.
bool is_linked_page(std::size_t page, std::size_t other, std::size_t pages);

template <typename Name>
void put_pager(text_buffer& out, std::size_t page, std::size_t pages, std::string_view up, Name name) {
    if (pages < 2)
        return;
    out.put("<p class=pager>Pages: ");
    for (std::size_t other = 1; other <= pages; ++other) {
        if (!is_linked_page(page, other, pages))
            continue;
        out.put(other == page ? "<a aria-current=page href=\"" : "<a href=\"");
        out.put(up);
        out.put(name(other));
        out.put("\">");
        out.put_number(other);
        out.put("</a> ");
    }
    out.put("</p>");
}
