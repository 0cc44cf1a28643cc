#include "profile_tool/findings.h"

#include <algorithm>
#include <cstdio>

constexpr std::size_t kShownPlaces = 5;

static const char* title_of(std::size_t kind) {
    switch (kind) {
    case FINDING_UNSORTED:
        return "records out of the order of their keys; a report may miss them";
    case FINDING_DOUBLE:
        return "records with the key of the one before; a report sees one of the two";
    case FINDING_NO_ROUTINE:
        return "records without a routine in the static profile; no report has them";
    case FINDING_BLOCKS:
        return "records with fewer or more blocks than their routine";
    case FINDING_COUNTERS:
        return "records with counters that are not finite, or no whole numbers";
    case FINDING_POSITIONS:
        return "records with blocks beyond the end of their line or file";
    case FINDING_MISSING:
        return "source files that are not there; a report leaves them out";
    case FINDING_NEWER:
        return "source files that are newer than the profile";
    default:
        return "source files with a page of the same name as another one's; a report shows the last";
    }
}

void findings::add(finding_kind kind, const std::function<std::string()>& place) {
    found& of_kind = kinds_[kind];
    if (of_kind.count++ < kShownPlaces)
        of_kind.places.push_back(place());
}

bool findings::is_empty() const {
    return std::all_of(kinds_.begin(), kinds_.end(), [](const found& f) { return f.count == 0; });
}

void findings::print() const {
    for (std::size_t kind = 0; kind < kinds_.size(); ++kind) {
        const found& of_kind = kinds_[kind];
        if (of_kind.count == 0)
            continue;
        std::printf("%s: %llu\n", title_of(kind), static_cast<unsigned long long>(of_kind.count));
        for (const std::string& place : of_kind.places)
            std::printf("    %s\n", place.c_str());
        if (of_kind.count > of_kind.places.size())
            std::fputs("    ...\n", stdout);
    }
    if (is_empty())
        std::fputs("nothing found\n", stdout);
}
