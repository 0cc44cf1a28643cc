#include "import/clang/function_records.h"

#include "import/clang/byte_reader.h"

/// The number of the name, which may be there already.
std::uint32_t function_records::add_name(std::uint64_t hash) {
    const std::uint32_t known = name_index(hash);
    if (known != hash_index::kNone)
        return known;
    const std::uint32_t added = static_cast<std::uint32_t>(names_.size());
    name_indices_.add(hash, added);
    names_.push_back({.hash = hash, .text = {}});
    ++nameless_;
    return added;
}

/// The number of the record, which may be there already; only then its mapping is copied.
std::uint32_t function_records::add_record(const function_record& record) {
    const std::uint64_t hash = mix_hash(mix_hash(record.name, record.structure), record.files);
    const std::uint32_t known = record_indices_.find(hash, [&](std::uint32_t index) {
        const function_record& other = records_[index];
        return other.name == record.name && other.structure == record.structure &&
               other.files == record.files && other.unused == record.unused;
    });
    if (known != hash_index::kNone)
        return known;
    const std::uint32_t added = static_cast<std::uint32_t>(records_.size());
    record_indices_.add(hash, added);
    records_.push_back(record);
    records_.back().mapping = bytes_.keep(record.mapping);
    records_.back().name_number = add_name(record.name);
    function_name& name = names_[records_.back().name_number];
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
        place_record(add_record(record), &object);
    }
    return object;
}

void function_records::set_name(std::uint64_t hash, std::string_view name) {
    const std::uint32_t index = name_index(hash);
    if (index == hash_index::kNone || !names_[index].text.empty() || name.empty())
        return;
    names_[index].text = bytes_.keep(name);
    --nameless_;
}
