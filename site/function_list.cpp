#include "site/function_list.h"

#include "site/html_text.h"
#include "site/site_page.h"

constexpr std::size_t kLongestFunction = 160;

std::string_view function_class(const site_function& function) {
    return !function.called ? "f" : function.uncovered() > 0 ? "u" : "";
}

static void put_figures(text_buffer& out, const covered_count& blocks) {
    out.put(' ');
    put_grouped(out, static_cast<std::uint64_t>(blocks.covered));
    out.put('/');
    put_grouped(out, static_cast<std::uint64_t>(blocks.total));
    out.put(' ');
    out.put(percent_of(blocks));
    out.put('%');
}

static void put_item(text_buffer& out, std::string_view kind) {
    out.put(kind.empty() ? "<li>" : "<li class=");
    out.put(kind);
    if (!kind.empty())
        out.put('>');
}

void put_fragment(text_buffer& out, const site_function& function, std::uint32_t lines) {
    out.put('#');
    if (function.line > 0 && static_cast<std::uint32_t>(function.line) <= lines)
        out.put_number(function.line);
}

static void put_function(text_buffer& out, const site_function& function, std::uint32_t lines) {
    put_item(out, function_class(function));
    out.put("<a href=");
    put_fragment(out, function, lines);
    out.put('>');
    put_name(out, function.name, kLongestFunction);
    out.put("</a>");
    put_figures(out, function.blocks);
}

/// The entry of functions that begin on one line.
static void put_instances(text_buffer& out, std::span<const site_function> functions, std::uint32_t lines) {
    covered_count sum;
    bool complete = true;
    std::size_t called = 0;
    for (const site_function& function : functions) {
        sum.total += function.blocks.total;
        sum.covered += function.blocks.covered;
        complete = complete && function_class(function).empty();
        called += function.called ? 1 : 0;
    }
    put_item(out, called == 0 ? "f" : complete ? "" : "u");
    out.put("<details><summary>");
    put_name(out, functions.front().name, kLongestFunction);
    out.put(" and ");
    put_grouped(out, functions.size() - 1);
    out.put(" more on line ");
    out.put_number(functions.front().line);
    put_figures(out, sum);
    out.put("</summary><ol>");
    for (const site_function& function : functions)
        put_function(out, function, lines);
    out.put("</ol></details>");
}

void put_function_list(text_buffer& out, std::span<const site_function> functions, std::uint32_t lines) {
    while (!functions.empty()) {
        std::size_t same = 1;
        while (same < functions.size() && functions[same].line == functions[0].line)
            ++same;
        if (same == 1)
            put_function(out, functions[0], lines);
        else
            put_instances(out, functions.first(same), lines);
        functions = functions.subspan(same);
    }
}
