#include "site/site_page.h"

#include "common/message.h"
#include "common/output_file.h"
#include "common/remedy.h"
#include "site/html_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static std::FILE* open_site_file(const site_settings& settings, std::string_view name) {
    const std::string path = settings.directory + "/" + std::string(name);
    std::FILE* stream = open_output(path.c_str(), "w");
    if (!stream)
        end_with_error("cannot write %s: %s", printable(path).c_str(), reason_of(errno).c_str());
    return stream;
}

void write_site_file(const site_settings& settings, std::string_view name, std::string_view text) {
    std::FILE* stream = open_site_file(settings, name);
    std::fwrite(text.data(), 1, text.size(), stream);
    close_output(stream);
}

site_page::site_page(const site_settings& settings, std::string_view name, std::string title)
    : stream_(open_site_file(settings, name)), out_(std::make_unique<text_buffer>(stream_)),
      up_(name.find('/') == std::string_view::npos ? "" : "../") {
    set_common(settings, std::move(title));
}

void site_page::set(std::string_view key, std::string html) {
    values_.set(key, [this, text = std::move(html)] { out_->put(text); });
}

void site_page::set_common(const site_settings& settings, std::string title) {
    set("title", std::move(title));
    set("site", settings.title);
    set("up", std::string(up_));
    set("covered", settings.differential ? "new" : "covered");
    set("uncovered", settings.differential ? "old" : "uncovered");
    values_.choice("plain", !settings.differential);
    values_.choice("differential", settings.differential);
    values_.choice("own_style", settings.has_own_style);
    values_.choice("changes_link", settings.has_changes);
}

void site_page::write(const page_template& form) {
    form.write(*out_, values_);
    out_.reset();
    close_output(stream_);
}

constexpr std::int64_t kMostScaled = INT64_MAX / 20000;

/// The hundredths of a percentage that printf shows.
static std::int64_t printed_hundredths(const covered_count& count) {
    char text[400];
    std::snprintf(text, sizeof text, "%.2f",
                  static_cast<double>(count.covered) * 100.0 / static_cast<double>(count.total));
    char* const point = std::strchr(text, '.');
    return std::strtoll(text, nullptr, 10) * 100 + std::strtoll(point + 1, nullptr, 10);
}

std::string percent_of(const covered_count& count) {
    if (count.total == 0)
        return "\xe2\x80\x93";
    // As printf rounds it, which is asked only for a tie.
    const std::int64_t scaled = count.covered * 10000;
    const std::int64_t rest = scaled % count.total;
    std::int64_t hundredths = scaled / count.total + (2 * rest > count.total ? 1 : 0);
    if (2 * rest == count.total || count.covered < 0 || count.covered > kMostScaled)
        hundredths = printed_hundredths(count);
    if (count.covered < count.total)
        hundredths = std::min<std::int64_t>(hundredths, 9999);
    std::string text = std::to_string(hundredths / 100);
    text += '.';
    text += static_cast<char>('0' + hundredths / 10 % 10);
    text += static_cast<char>('0' + hundredths % 10);
    return text;
}

void put_bar(text_buffer& out, const covered_count& count) {
    out.put("<meter max=");
    out.put_number(count.total == 0 ? 1 : count.total);
    out.put(" value=");
    out.put_number(count.covered);
    out.put("></meter>");
}

void put_count_cells(text_buffer& out, const covered_count& count, bool with_bar) {
    out.put("<td>");
    put_grouped(out, static_cast<std::uint64_t>(count.covered));
    out.put("<td>");
    put_grouped(out, static_cast<std::uint64_t>(count.total));
    out.put("<td>");
    out.put(percent_of(count));
    if (with_bar && count.total != 0) {
        out.put("<td>");
        put_bar(out, count);
    } else if (with_bar) {
        out.put("<td>");
    }
}
