#include "import/place_names.h"

#include "demangle/shared_name.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

/// Adds the friends among the functions of one place, from `begin` on.
static void add_friends(std::vector<named_place>::const_iterator begin,
                        std::vector<named_place>::const_iterator end, std::vector<namesakes>* found) {
    const auto other_name = [begin](const named_place& place) { return *place.name != *begin->name; };
    if (std::none_of(begin, end, other_name))
        return;
    std::map<std::string, std::vector<named_place>> by_name;
    for (auto place = begin; place != end; ++place)
        by_name[name_without_parameters(*place->name)].push_back(*place);
    for (const auto& [name, places] : by_name) {
        const std::string& first = *places.front().name;
        if (std::all_of(places.begin(), places.end(),
                        [&first](const named_place& place) { return *place.name == first; }))
            continue;
        namesakes& group = found->emplace_back();
        group.name = name;
        for (const named_place& place : places)
            group.indices.push_back(place.index);
    }
}

std::vector<namesakes> find_friends(std::vector<named_place> places) {
    std::sort(places.begin(), places.end(), [](const named_place& a, const named_place& b) {
        return std::tie(a.file, a.start, a.index) < std::tie(b.file, b.start, b.index);
    });
    std::vector<namesakes> found;
    for (auto begin = places.cbegin(), end = begin; begin != places.cend(); begin = end) {
        const auto elsewhere = [begin](const named_place& place) {
            return place.file != begin->file || place.start != begin->start;
        };
        end = std::find_if(begin, places.cend(), elsewhere);
        add_friends(begin, end, &found);
    }
    return found;
}

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
