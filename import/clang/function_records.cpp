#include "import/clang/function_records.h"

#include "import/clang/byte_reader.h"

static std::uint64_t hash_of(const function_record& record) {
    return mix_hash(mix_hash(record.name, record.structure), record.files);
}

bool function_records::is_same(std::uint32_t number, const function_record& record) const {
    const function_record& other = records_[number];
    return other.name == record.name && other.structure == record.structure && other.files == record.files &&
           other.unused == record.unused;
}

std::uint32_t function_records::find_record(const function_record& record) const {
    if (expected_ < records_.size() && is_same(expected_, record))
        return expected_;
    const std::uint32_t name = name_index(record.name);
    if (name == hash_index::kNone)
        return hash_index::kNone;
    if (is_same(names_[name].first, record))
        return names_[name].first;
    return others_.find(hash_of(record), [&](std::uint32_t number) { return is_same(number, record); });
}

/// The number of the record, which may be there already; only if it is not, its mapping is copied.
std::uint32_t function_records::add_record(const function_record& record) {
    const std::uint32_t known = find_record(record);
    if (known != hash_index::kNone)
        return known;
    function_record kept = record;
    kept.mapping = bytes_.keep(record.mapping);
    kept.name_number = name_index(record.name);
    const std::uint32_t added = records_.size();
    if (kept.name_number == hash_index::kNone) {
        function_name fresh = {};
        fresh.hash = record.name;
        fresh.first = added;
        kept.name_number = names_.add(fresh);
        name_indices_.add(record.name, kept.name_number);
        ++nameless_;
    } else {
        others_.add(hash_of(record), added);
    }
    records_.add(kept);
    function_name& name = names_[kept.name_number];
    name.used = name.used || !record.unused;
    ++name.records;
    return added;
}

void function_records::place_record(std::uint32_t record, std::vector<std::uint32_t>* object) {
    function_name& name = names_[records_[record].name_number];
    if (name.object != objects_) {
        name.object = objects_;
        name.place = static_cast<std::uint32_t>(object->size());
        object->push_back(record);
    } else if (records_[(*object)[name.place]].unused && !records_[record].unused) {
        (*object)[name.place] = record;
    }
}

std::vector<std::uint32_t> function_records::add(std::string_view section, source_files* files,
                                                 std::uint32_t input) {
    std::vector<std::uint32_t> object;
    ++objects_;
    const file_table* table = nullptr;
    std::uint64_t table_key = 0;
    byte_reader reader(section);
    for (; !reader.empty(); reader.align_8()) {
        function_record record = {};
        record.input = input;
        record.name = reader.u64();
        const std::uint32_t size = reader.u32();
        record.structure = reader.u64();
        const std::uint64_t key = reader.u64();
        const std::string_view mapping = reader.bytes(size);
        if (!table || key != table_key) // functions of one translation unit often stand together
            table = files->table(key);
        table_key = key;
        if (!table)
            throw input_error("has damaged coverage mapping: a table of source files is missing");
        read_mapping_files(mapping, &head_);
        listed_.clear();
        for (const std::uint64_t index : head_.indices) {
            if (index >= table->size())
                throw input_error("has damaged coverage mapping: a source file is missing");
            listed_.push_back((*table)[static_cast<std::size_t>(index)]);
        }
        record.files = files->list_number(listed_);
        record.unused = record.structure == 0 && is_unused_function(mapping, head_);
        record.mapping = mapping.substr(head_.end);
        const std::uint32_t number = add_record(record);
        expected_ = number + 1;
        place_record(number, &object);
    }
    return object;
}

bool function_records::set_name(std::uint64_t hash, std::string_view name) {
    const std::uint32_t index = name_index(hash);
    if (index == hash_index::kNone)
        return false;
    if (names_[index].text.empty() && !name.empty()) {
        names_[index].text = bytes_.keep(name);
        --nameless_;
    }
    return true;
}
