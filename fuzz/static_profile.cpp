// Input: a static profile. The module list is compared with what fscanf reads from the same file, and the
// chain by line with plain insertion.
#include "fuzz/harness.h"
#include "profile/component_sort.h"
#include "profile/line_order.h"
#include "profile/module_list.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <map>
#include <tuple>

namespace {

/// Source file, routine, line: what makes two records duplicates.
using record_key = std::tuple<std::string, std::string, int>;

/// What fscanf finds in a static profile.
struct plain_profile {
    bool corrupt = false;
    std::multimap<record_key, std::pair<int, char>> records; ///< with their blocks and flags
};

} // namespace

static bool read_plain_record(std::FILE* file, plain_profile* profile) {
    const long start = std::ftell(file);
    int head[4] = {};
    if (std::fscanf(file, "V%d %d %d %d", &head[0], &head[1], &head[2], &head[3]) != 4 || head[0] != 1)
        std::fseek(file, start, SEEK_SET);
    char* texts[3] = {};
    int line = 0;
    int blocks = 0;
    char flag = 0;
    const int fields =
        std::fscanf(file, "%ms %ms %ms %d %d %c", &texts[0], &texts[1], &texts[2], &line, &blocks, &flag);
    if (fields == 6)
        profile->records.emplace(record_key(texts[0], texts[2], line), std::pair(blocks, flag));
    for (char* text : texts)
        std::free(text);
    return fields == 6;
}

static plain_profile read_plainly(const std::string& path) {
    plain_profile profile;
    std::FILE* file = std::fopen(path.c_str(), "r");
    int c = 0;
    while (c != EOF && !profile.corrupt) {
        profile.corrupt = !file || !read_plain_record(file, &profile);
        while (!profile.corrupt && (c = std::fgetc(file), c != EOF && c != '\n')) {
        }
        c = profile.corrupt ? EOF : std::ungetc(std::fgetc(file), file);
    }
    if (file)
        std::fclose(file);
    return profile;
}

/// True when no number exceeds 32 bits, beyond which fscanf does not say what it read.
static bool numbers_are_small(std::string_view text) {
    std::int64_t value = 0;
    for (const char c : text) {
        value = c >= '0' && c <= '9' ? value * 10 + (c - '0') : 0;
        if (value > INT32_MAX)
            return false;
    }
    return true;
}

/// The chain of a file's routines by plain insertion.
static std::list<const COMP*> chain_by_insertion(const COMP* first) {
    std::list<const COMP*> chain = {first};
    for (const COMP* comp = first->next; comp && same_file(comp, first); comp = comp->next) {
        auto place = chain.begin();
        if (comp->line > chain.back()->line)
            place = chain.end();
        else
            while (place != chain.end() && (*place)->line < comp->line)
                ++place;
        chain.insert(place, comp);
    }
    return chain;
}

static void check_chain(COMP* first) {
    order_func(first);
    const COMP* link = first_func_line;
    for (const COMP* expected : chain_by_insertion(first)) {
        require(link == expected && link->firstByLine == first_func_line, "the chain by line");
        link = link->nextByLine;
    }
    require(!link, "the end of the chain by line");
}

static void check_list(COMP* head, int count, const plain_profile* plain) {
    require(getNumComponents(head) == count, "the count of the list");
    std::map<record_key, int> kept;
    for (COMP* comp = head; comp; comp = comp->next) {
        ++kept[{comp->fileName, comp->procName, comp->line}];
        require(std::strlen(comp->fileName) <= 1 << 20, "a name from the input");
        require(!comp->next || compareComponets(comp, comp->next) <= 0, "the order of the list");
        require(comp != head || comp->isFirstOfFile == 1, "the first record begins a file");
        require(!comp->next || (comp->next->isFirstOfFile == 1) == !same_file(comp, comp->next),
                "the first record of each file");
        if (comp->next && same_file(comp, comp->next) && comp->line == comp->next->line &&
            std::strcmp(comp->displayName, comp->next->displayName) == 0)
            require(std::strcmp(comp->procName, comp->next->procName) != 0 && comp->isAmbiguous == 1 &&
                        comp->next->isAmbiguous == 1,
                    "neighbours of one name are ambiguous, not duplicates");
        if (comp->isFirstOfFile == 1)
            check_chain(comp);
    }
    if (!plain)
        return;
    require(!plain->corrupt, "a corrupt profile is refused");
    for (const COMP* comp = head; comp; comp = comp->next) {
        const auto [first, last] = plain->records.equal_range({comp->fileName, comp->procName, comp->line});
        const auto is_kept = [comp](const auto& record) {
            return record.second == std::pair(comp->blockCount, comp->spiFlag);
        };
        require(std::any_of(first, last, is_kept), "blocks and flag of a record");
    }
    std::size_t records = 0;
    for (const auto& [key, fields] : plain->records)
        require(kept.count(key) == 1, "no record is lost");
    for (const auto& [key, times] : kept) {
        records += static_cast<std::size_t>(times);
        require(static_cast<std::size_t>(times) <= plain->records.count(key), "no record is invented");
    }
    require(records == static_cast<std::size_t>(count), "every record is in the input");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    scratch().put("s", text);
    const std::string name = size == 0 ? "absent" : "s";
    const bool comparable = numbers_are_small(text);
    const plain_profile plain = read_plainly(scratch().path() / name);
    const outcome end = run_in_scratch([&] {
        int count = -1;
        module_list list;
        COMP* head = GetComponentList(name.c_str(), &count, nullptr, list);
        check_list(head, count, comparable ? &plain : nullptr);
    });
    require(!comparable || end.ended == plain.corrupt, "a profile is refused exactly when it is corrupt");
    return 0;
}
