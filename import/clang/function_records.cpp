#include "import/clang/function_records.h"

#include "import/clang/byte_reader.h"

std::uint32_t function_records::add_record(const identity& id, std::string_view mapping, bool unused,
                                           std::uint32_t input) {
    const auto [entry, added] =
        known_[unused ? 1 : 0].emplace(id, static_cast<std::uint32_t>(records_.size()));
    if (!added)
        return entry->second;
    records_.push_back({id.name, id.structure, id.files, input, unused, mappings_.size(), mapping.size()});
    mappings_ += mapping;
    const auto [name, first] = names_.try_emplace(id.name);
    name->second.used = name->second.used || !unused;
    nameless_ += first ? 1 : 0;
    return entry->second;
}

void function_records::place_record(std::uint32_t record, std::vector<std::uint32_t>* object) {
    function_name& name = names_.at(records_[record].name);
    if (name.object != objects_) {
        name.object = objects_;
        name.place = object->size();
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
        identity id = {};
        id.name = reader.u64();
        const std::uint32_t size = reader.u32();
        id.structure = reader.u64();
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
        id.files = files->list_number(listed_);
        const bool unused = id.structure == 0 && is_unused_function(mapping, head_);
        place_record(add_record(id, mapping.substr(head_.end), unused, input), &object);
    }
    return object;
}

void function_records::set_name(std::uint64_t hash, std::string_view name) {
    const auto found = names_.find(hash);
    if (found == names_.end() || found->second.size != 0 || name.empty())
        return;
    found->second.begin = texts_.size();
    found->second.size = name.size();
    texts_ += name;
    --nameless_;
}

std::string_view function_records::name(std::uint64_t hash) const {
    const function_name& of = names_.at(hash);
    return std::string_view(texts_).substr(of.begin, of.size);
}
