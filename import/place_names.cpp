#include "import/place_names.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

static void append_number(std::string* name, std::uint32_t number) {
    *name += ':';
    *name += std::to_string(number);
}

void tell_apart(std::vector<named_place> places) {
    std::sort(places.begin(), places.end(), [](const named_place& a, const named_place& b) {
        return std::tie(a.file, *a.name, a.start) < std::tie(b.file, *b.name, b.start);
    });
    const auto same_name = [&](std::size_t a, std::size_t b) {
        return b < places.size() && places[a].file == places[b].file && *places[a].name == *places[b].name;
    };
    const auto same_line = [&](std::size_t a, std::size_t b) {
        return places[a].start.line == places[b].start.line;
    };
    for (std::size_t begin = 0, end = 0; begin < places.size(); begin = end) {
        for (end = begin + 1; same_name(begin, end);)
            ++end;
        if (end == begin + 1)
            continue;
        for (std::size_t i = begin; i < end; ++i) {
            const source_position& start = places[i].start;
            append_number(places[i].name, start.line);
            if ((i > begin && same_line(i - 1, i)) || (i + 1 < end && same_line(i, i + 1)))
                append_number(places[i].name, start.column);
        }
    }
}
