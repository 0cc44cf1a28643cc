#include "import/clang/clang_join.h"

#include "import/clang/indexed_profile.h"
#include "import/clang/name_hash.h"
#include "import/clang/profile_names.h"
#include "import/clang/raw_profile.h"
#include "import/import_message.h"

#include <algorithm>

void clang_join::begin_input(const std::string& name) {
    inputs_.push_back({name, {}, {}});
}

void clang_join::add_object(const mapped_sections& object) {
    input& current = inputs_.back();
    if (!object.build_id.empty())
        current.ids.insert(object.build_id);
    files_.read_tables(object.tables);
    const std::vector<std::uint32_t> added =
        records_.add(object.functions, &files_, static_cast<std::uint32_t>(inputs_.size() - 1));
    current.records.insert(current.records.end(), added.begin(), added.end());
    if (lacks_names())
        for_each_name(object.names,
                      [this](std::string_view name) { records_.set_name(name_hash(name), name); });
}

void clang_join::add_profile(std::string_view file) {
    if (is_indexed_profile(file))
        return read_indexed_profile(file, &counters_, [](std::uint64_t, std::string_view) {});
    read_raw_profile(file, {&counters_, [this](std::string_view id) { profiled_ids_.emplace(id); },
                            [](std::string_view) {}});
}

void clang_join::add_names(std::string_view file) {
    counter_store ignored;
    const auto take = [this](std::string_view name) { records_.set_name(name_hash(name), name); };
    if (is_indexed_profile(file))
        return read_indexed_profile(file, &ignored, [this](std::uint64_t hash, std::string_view name) {
            records_.set_name(hash, name);
        });
    read_raw_profile(file, {&ignored, [](std::string_view) {},
                            [&](std::string_view section) { for_each_name(section, take); }});
}

/// Translation units that saw a function and did not use it describe it, too, as one region without a
/// counter.
bool clang_join::is_wanted(const function_record& record) const {
    if (!record.unused)
        return true;
    if (records_.is_used(record.name))
        return false;
    if (!counters_.knows(record.name))
        return true;
    const function_counters counters = counters_.find(record.name, record.structure);
    return counters.data && counters.size != 0 && counters.data[0] == 0;
}

void clang_join::note_mismatch(const function_record& record) {
    if (record.unused)
        return;
    if (mismatched_++ == 0)
        first_mismatched_ = records_.name(record.name);
}

void clang_join::name_files(const function_record& record, export_function* function) const {
    function->filenames.clear();
    const std::uint32_t* const files = files_.list(record.files);
    for (std::uint32_t i = 0; i < files_.list_size(record.files); ++i)
        function->filenames.add(files_.name(files[i]));
}

bool clang_join::decode(const function_record& record, const function_counters& counters,
                        export_function* function) {
    const std::string& program = inputs_[record.input].name;
    function->name = records_.name(record.name);
    if (function->name.empty())
        import_error("%s has lost the names of its functions; give the file as the linker wrote it",
                     printable(program).c_str());
    try {
        return decoder_.decode(records_.mapping(record), files_.list_size(record.files), counters, function);
    } catch (const input_error& error) {
        import_error("%s %s (function \"%s\")", printable(program).c_str(), error.what(),
                     printable(function->name).c_str());
    }
}

/// Whether the function that `record` describes is to be handed out; `*function` is it then.
bool clang_join::join(const function_record& record, export_function* function) {
    if (!is_wanted(record))
        return false;
    const function_counters counters = counters_.find(record.name, record.structure);
    const bool other_build = !counters.data && counters_.knows(record.name);
    if (!other_build && handed_out_.contains({record.name, record.files}))
        return false;
    if (other_build || !decode(record, counters, function)) {
        note_mismatch(record);
        return false;
    }
    handed_out_.insert({record.name, record.files});
    name_files(record, function);
    return true;
}

void clang_join::hand_out(
    const std::function<void(const export_function&, const std::string& input)>& on_function,
    export_function* memory) {
    std::vector<bool> done(records_.records().size());
    for (const input& each : inputs_) {
        for (const std::uint32_t record : each.records) {
            if (!done[record] && join(records_.records()[record], memory))
                on_function(*memory, each.name);
            done[record] = true;
        }
    }
    print_warnings();
}

void clang_join::print_warnings() const {
    bool same_build = false;
    bool has_ids = false;
    for (const input& each : inputs_) {
        const auto unknown = [&](std::uint32_t i) { return !counters_.knows(records_.records()[i].name); };
        if (!each.records.empty() && std::all_of(each.records.begin(), each.records.end(), unknown))
            import_warning("no profile belongs to %s: nothing in it was executed",
                           printable(each.name).c_str());
        has_ids = has_ids || !each.ids.empty();
        same_build = same_build || std::any_of(each.ids.begin(), each.ids.end(), [&](const std::string& id) {
                         return profiled_ids_.contains(id);
                     });
    }
    if (has_ids && !profiled_ids_.empty() && !same_build)
        import_warning(
            "the profiles are of another build than the programs: they have no build ID in common");
    if (mismatched_ != 0)
        import_warning("%llu functions do not fit their counts and were left out, the first is \"%s\"; "
                       "was the program built again after the run?",
                       static_cast<unsigned long long>(mismatched_), printable(first_mismatched_).c_str());
    if (counters_.different() != 0)
        import_warning("%llu times a function came with another number of counts; the first was kept",
                       static_cast<unsigned long long>(counters_.different()));
}
