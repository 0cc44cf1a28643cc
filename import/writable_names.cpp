#include "import/writable_names.h"

#include "common/message.h"
#include "import/record_order.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

static bool is_unwritable(char c) {
    const unsigned char byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7f;
}

static bool can_be_written(std::string_view name) {
    return !name.empty() && std::none_of(name.begin(), name.end(), is_unwritable);
}

/// The names that are to be written for `names`, each of which is there once, by these. Those that can be
/// written stay, so what the others become depends on nothing but the set of names.
static std::map<std::string, std::string> replacements(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    std::unordered_set<std::string> taken(names.begin(), names.end());
    std::unordered_map<std::string, std::uint64_t> numbers; // given last behind a name
    std::map<std::string, std::string> result;
    for (const std::string& name : names) {
        if (can_be_written(name))
            continue;
        std::string replaced = name.empty() ? "(anonymous)" : name;
        std::replace_if(replaced.begin(), replaced.end(), is_unwritable, '_');
        if (!taken.insert(replaced).second) {
            std::uint64_t& number = numbers.emplace(replaced, 1).first->second;
            std::string numbered;
            do
                numbered = replaced + '_' + std::to_string(++number);
            while (!taken.insert(numbered).second);
            replaced = std::move(numbered);
        }
        result.emplace(name, std::move(replaced));
    }
    return result;
}

static std::uint64_t replace_files(std::vector<std::string>* files) {
    const std::map<std::string, std::string> replaced = replacements(*files);
    for (std::string& file : *files) {
        const auto found = replaced.find(file);
        if (found != replaced.end())
            file = found->second;
    }
    return replaced.size();
}

/// Replaces the names of one file's functions.
static std::uint64_t replace_functions(const std::vector<PGOPTI_ROUTINE*>& routines) {
    std::unordered_set<std::string> names;
    for (const PGOPTI_ROUTINE* routine : routines)
        names.insert(routine->name);
    const std::map<std::string, std::string> replaced = replacements({names.begin(), names.end()});
    for (PGOPTI_ROUTINE* routine : routines) {
        const auto found = replaced.find(routine->name);
        if (found != replaced.end())
            routine->name = found->second;
    }
    return replaced.size();
}

replaced_names make_names_writable(PGOPTI_PROFILE* profile) {
    replaced_names result;
    if (!std::all_of(profile->files.begin(), profile->files.end(), can_be_written))
        result.files = replace_files(&profile->files);
    std::map<std::uint32_t, std::vector<PGOPTI_ROUTINE*>> concerned; // files with their routines
    for (const PGOPTI_ROUTINE& routine : profile->routines) {
        if (!can_be_written(routine.name))
            concerned[routine.file];
    }
    if (!concerned.empty()) {
        for (PGOPTI_ROUTINE& routine : profile->routines) {
            const auto found = concerned.find(routine.file);
            if (found != concerned.end())
                found->second.push_back(&routine);
        }
    }
    for (const auto& [file, routines] : concerned)
        result.functions += replace_functions(routines);
    if (result.files != 0 || result.functions != 0)
        sort_records(profile);
    return result;
}

/// "1 source file", "2 source files".
static std::string counted(std::uint64_t number, const char* what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

void warn_of_replaced_names(const replaced_names& replaced) {
    const std::string functions = counted(replaced.functions, "function");
    if (replaced.files != 0)
        print_warning("white space and control characters in the names of %s and %s became _; vexcov does "
                      "not find such source files",
                      counted(replaced.files, "source file").c_str(), functions.c_str());
    else if (replaced.functions != 0)
        print_warning("white space and control characters in the names of %s became _", functions.c_str());
}
