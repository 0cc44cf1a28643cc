#include "import/clang/clang_join.h"

#include "common/message.h"
#include "import/clang/indexed_profile.h"
#include "import/clang/name_hash.h"
#include "import/clang/raw_profile.h"

#include <algorithm>
#include <iterator>

/// Bytes of the names of one function's files. A function of thousands of macros has some hundred thousand.
constexpr std::size_t kMostFileNames = std::size_t{1} << 28;

/// Records between the one that is handed out and the one that is prepared.
constexpr std::size_t kAhead = 4;

void clang_join::begin_input(const std::string& name) {
    inputs_.push_back({printable(name), {}, {}});
}

void clang_join::add_object(const mapped_sections& object) {
    input& current = inputs_.back();
    if (!object.build_id.empty())
        current.ids.insert(object.build_id);
    files_.read_tables(object.tables.view());
    const std::vector<std::uint32_t> added =
        records_.add(object.functions.view(), &files_, static_cast<std::uint32_t>(inputs_.size() - 1));
    current.records.insert(current.records.end(), added.begin(), added.end());
    read_names(object.names.view());
}

/// Much of the time goes into hashes: those of names that an earlier program had, and that nobody is likely
/// to ask for, are taken only when a name is missing. A name that is taken has the hash that was asked for,
/// which proves it better than the sum of its stream; that is looked at when a name is missing.
void clang_join::read_names(std::string_view section) {
    for (const name_choice choice : {name_choice::promising, name_choice::unseen, name_choice::all}) {
        const bool last = choice == name_choice::all;
        name_blocks blocks(section, &unpacked_);
        while (lacks_names() && blocks.next()) {
            const std::uint64_t hash =
                mix_hash(quick_hash(blocks.stored()), static_cast<std::uint64_t>(choice));
            if (!last && seen_names_.contains(hash))
                continue;
            if (read_block(blocks.text(last ? checksum::verified : checksum::ignored), choice))
                seen_names_.add(hash);
        }
    }
}

/// Returns false when no more names are needed.
bool clang_join::read_block(std::string_view names, name_choice choice) {
    return for_each_name(names, [&](std::string_view name) {
        if (choice != name_choice::all) {
            if (choice == name_choice::promising && name_groups_.can_wait(name))
                return true;
            const std::uint64_t quick = quick_hash(name);
            if (seen_names_.contains(quick))
                return true;
            seen_names_.add(quick);
        }
        name_groups_.count(name, records_.set_name(name_hash(name), name));
        return lacks_names();
    });
}

void clang_join::add_profile(std::string_view file) {
    if (is_indexed_profile(file))
        return read_indexed_profile(file, &counters_, [](std::uint64_t, std::string_view) {});
    read_raw_profile(file, {&counters_, [this](std::string_view id) { profiled_ids_.emplace(id); },
                            [](std::string_view) {}});
}

void clang_join::add_names(std::string_view file) {
    counter_store ignored;
    if (is_indexed_profile(file))
        return read_indexed_profile(file, &ignored, [this](std::uint64_t hash, std::string_view name) {
            records_.set_name(hash, name);
        });
    read_raw_profile(
        file, {&ignored, [](std::string_view) {}, [this](std::string_view section) { read_names(section); }});
}

/// Translation units that saw a function and did not use it describe it, too, as one region without a
/// counter.
bool clang_join::is_wanted(const function_record& record) const {
    if (!record.unused)
        return true;
    if (records_.is_used(record))
        return false;
    if (!counters_.knows(record.name))
        return true;
    const function_counters counters = counters_.find(record.name, record.structure);
    return counters.data && counters.size != 0 && counters.data[0] == 0;
}

void clang_join::name_files(const function_record& record, export_function* function) const {
    function->filenames.clear();
    const std::uint32_t* const files = files_.list(record.files);
    std::size_t size = 0;
    for (std::uint32_t i = 0; i < files_.list_size(record.files); ++i) {
        size += files_.name(files[i]).size();
        if (size > kMostFileNames)
            end_with_error("%s has damaged coverage mapping: function \"%s\" has too many files",
                           inputs_[record.input].name.c_str(), printable(function->name).c_str());
        function->filenames.add(files_.name(files[i]));
    }
}

bool clang_join::decode(const function_record& record, const function_counters& counters,
                        export_function* function) {
    const std::string& program = inputs_[record.input].name;
    function->name = records_.name(record);
    if (function->name.empty())
        end_with_error("%s has lost the names of its functions; give the file as the linker wrote it",
                       program.c_str());
    try {
        return decoder_.decode(record.mapping, files_.list_size(record.files), counters, function);
    } catch (const input_error& error) {
        end_with_error("%s %s (function \"%s\"); build the program again, and run the tests", program.c_str(),
                       error.what(), printable(function->name).c_str());
    }
}

static std::uint64_t hash_of(const function_record& record) {
    return mix_hash(record.name, record.files);
}

/// By another record of the same name and files: it is in another program.
bool clang_join::was_handed_out(const function_record& record) const {
    if (records_.is_alone(record)) // nearly all
        return false;
    const auto is_same = [&](std::uint32_t number) {
        const function_record& other = records_.records()[number];
        return other.name == record.name && other.files == record.files;
    };
    return handed_out_.find(hash_of(record), is_same) != hash_index::kNone;
}

/// Whether the function that a record describes is to be handed out; `*function` is it then.
bool clang_join::join(std::uint32_t number, export_function* function) {
    const function_record& record = records_.records()[number];
    if (!is_wanted(record))
        return false;
    const function_counters counters = counters_.find(record.name, record.structure);
    const bool other_build = !counters.data && counters_.knows(record.name);
    if (!other_build && was_handed_out(record))
        return false;
    if (other_build || !decode(record, counters, function)) {
        if (!record.unused)
            mismatched_.push_back(number);
        return false;
    }
    if (!records_.is_alone(record))
        handed_out_.add(hash_of(record), number);
    records_.set_matched(record);
    name_files(record, function);
    return true;
}

void clang_join::hand_out(
    const std::function<void(const export_function&, const std::string& input)>& on_function,
    export_function* memory) {
    std::vector<bool> done(records_.records().size());
    for (const input& each : inputs_) {
        for (std::size_t i = 0; i < each.records.size(); ++i) {
            if (i + kAhead < each.records.size())
                counters_.prepare(records_.records()[each.records[i + kAhead]].name);
            const std::uint32_t record = each.records[i];
            if (!done[record] && join(record, memory))
                on_function(*memory, each.name);
            done[record] = true;
        }
    }
    print_warnings();
}

/// Where another function of the name fits its counts, they are of that one: each program has a main.
void clang_join::warn_of_mismatches() const {
    std::vector<std::uint32_t> left;
    std::copy_if(mismatched_.begin(), mismatched_.end(), std::back_inserter(left),
                 [&](std::uint32_t i) { return !records_.is_matched(records_.records()[i]); });
    if (!left.empty())
        print_warning(left.size() == 1 ? "%zu function does not fit its counts and was left out, \"%s\"; "
                                         "was the program built again after the run?"
                                       : "%zu functions do not fit their counts and were left out, the first "
                                         "is \"%s\"; was the program built again after the run?",
                      left.size(), printable(records_.name(records_.records()[left[0]])).c_str());
}

void clang_join::print_warnings() const {
    bool same_build = false;
    bool has_ids = false;
    for (const input& each : inputs_) {
        const auto unknown = [&](std::uint32_t i) { return !counters_.knows(records_.records()[i].name); };
        if (!each.records.empty() && std::all_of(each.records.begin(), each.records.end(), unknown))
            print_warning("no profile belongs to %s: nothing in it was executed", each.name.c_str());
        has_ids = has_ids || !each.ids.empty();
        same_build = same_build || std::any_of(each.ids.begin(), each.ids.end(), [&](const std::string& id) {
                         return profiled_ids_.contains(id);
                     });
    }
    if (has_ids && !profiled_ids_.empty() && !same_build)
        print_warning(
            "the profiles are of another build than the programs: they have no build ID in common; run "
            "the tests again");
    warn_of_mismatches();
    if (counters_.different() != 0)
        print_warning(counters_.different() == 1
                          ? "%llu time a function came with another number of counts; the first was "
                            "kept (import the profiles of one build at a time)"
                          : "%llu times a function came with another number of counts; the first was "
                            "kept (import the profiles of one build at a time)",
                      static_cast<unsigned long long>(counters_.different()));
}
