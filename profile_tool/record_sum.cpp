#include "profile_tool/record_sum.h"

#include "common/little_endian.h"
#include "common/printable.h"
#include "profile_tool/block_tail.h"

#include <algorithm>
#include <cstring>
#include <utility>

/// The name of a routine of the present record; nothing where it is that of the function, as it mostly is: so
/// many of them take no memory. False when it cannot be read.
static bool read_routine(DPI_CURSOR& cursor, std::uint64_t offset, std::optional<std::string>* name) {
    name->reset();
    if (offset == DPI_key_func_name_get(cursor.record()))
        return true;
    std::string text;
    if (!cursor.read_name(offset, &text))
        return false;
    if (text != cursor.function_name())
        *name = std::move(text);
    return true;
}

static bool fail_counter(const DPI_CURSOR& cursor, std::string* error) {
    *error = cursor.name() + ": a counter of function " + printable(cursor.function_name()) + " of " +
             printable(cursor.file_name()) + " is no whole number; import it again";
    return false;
}

bool record_sum::start(merge_source& source, std::string* error) {
    DPI_CURSOR& cursor = source.cursor();
    const DPI_RECORD record = cursor.record();
    if (!DPI_decode(record, &content_))
        return fail_counter(cursor, error);
    origin_ = source.origin();
    file_ = cursor.file_name();
    function_ = cursor.function_name();
    routines_.resize(content_.routine_names.size());
    has_vtbl_ = content_.vtbl_name != 0;
    bool read = !has_vtbl_ || cursor.read_name(content_.vtbl_name, &vtbl_);
    for (std::size_t i = 0; read && i < routines_.size(); ++i)
        read = read_routine(cursor, content_.routine_names[i], &routines_[i]);
    if (!read)
        *error = cursor.error();
    return read;
}

static bool same_bytes(const std::string& bytes, const unsigned char* start) {
    return std::memcmp(bytes.data(), start, bytes.size()) == 0;
}

/// Whether the blocks of a record are of the same function. Entries are known by their blocks' numbers, which
/// those that not every run has must not change.
bool record_sum::has_blocks_of(DPI_RECORD record) const {
    const DPI_AREAS areas = DPI_areas_get(record);
    if (DPI_has_line_info(record) != content_.has_positions)
        return false;
    const std::string_view positions(reinterpret_cast<const char*>(areas.positions),
                                     content_.has_positions ? 8 * std::size_t{DPI_block_count_get(record)}
                                                            : 0);
    if (!content_.has_positions || positions == content_.positions)
        return areas.counter_count == content_.counters.size();
    const block_parts parts = find_block_parts(content_.positions);
    for (std::size_t i = 0; i < content_.entry_indices.size(); i += 4)
        if (little_endian_at<std::uint32_t>(content_.entry_indices, i) >= parts.common)
            return false;
    return are_of_one_function(content_.positions, parts, positions);
}

bool record_sum::agrees(merge_source& source) const {
    DPI_CURSOR& cursor = source.cursor();
    const DPI_RECORD record = cursor.record();
    const bool same = cursor.file_name().size() == file_.size() &&
                      read_u32(record.bytes + record.layout->second_group) == content_.second_group &&
                      read_u32(record.bytes + record.layout->third_group) == content_.third_group &&
                      DPI_routine_count_get(record) == routines_.size() &&
                      same_bytes(content_.entry_indices, DPI_areas_get(record).entry_indices) &&
                      has_blocks_of(record);
    std::optional<std::string> name;
    for (std::uint32_t i = 0; same && i < routines_.size(); ++i)
        if (!read_routine(cursor, DPI_routine_name_get(record, i), &name) || name != routines_[i])
            return false;
    return same;
}

/// Keeps what is the same in the sum and in a record that agrees with it.
void record_sum::keep_equal(const DPI_CONTENT& other) {
    for (std::size_t i = 0; i < content_.carried.size(); ++i)
        if (content_.carried[i] != other.carried[i])
            content_.carried[i] = 0;
    for (std::size_t at = 0; at < content_.values.size(); at += PGOPTI_VALUE_AREA_SIZE)
        if (content_.values.compare(at, PGOPTI_VALUE_AREA_SIZE, other.values, at, PGOPTI_VALUE_AREA_SIZE) !=
            0)
            content_.values.replace(at, PGOPTI_VALUE_AREA_SIZE, PGOPTI_VALUE_AREA_SIZE, '\0');
}

/// Likewise the name of the virtual table.
bool record_sum::keep_equal_table(merge_source& source) {
    if (!has_vtbl_)
        return true;
    std::string name;
    if (other_.vtbl_name != 0 && !source.cursor().read_name(other_.vtbl_name, &name))
        return false;
    has_vtbl_ = other_.vtbl_name != 0 && name == vtbl_;
    return true;
}

bool record_sum::add(merge_source& source, std::string* error) {
    if (!DPI_decode(source.cursor().record(), &other_))
        return fail_counter(source.cursor(), error);
    add_counters(&content_, other_);
    keep_equal(other_);
    if (!keep_equal_table(source)) {
        *error = source.cursor().error();
        return false;
    }
    const merge_origin origin = source.origin();
    origin_ = {std::max(origin_.time, origin.time), std::min(origin_.number, origin.number)};
    return true;
}

/// All that records that agree have in common.
std::string record_sum::shape() const {
    std::string text;
    for (const std::size_t number :
         {content_.counters.size(), file_.size(), std::size_t{content_.second_group},
          std::size_t{content_.third_group}, std::size_t{content_.has_positions}, routines_.size()})
        text.append(std::to_string(number)).append(1, ' ');
    text.append(content_.positions).append(content_.entry_indices);
    for (const std::optional<std::string>& routine : routines_)
        text.append(routine ? *routine + '\1' : std::string()).append(1, '\0');
    return text;
}

bool record_sum::is_newer(const record_sum& a, const record_sum& b) {
    return a.origin_.time != b.origin_.time ? a.origin_.time > b.origin_.time : a.shape() > b.shape();
}

bool record_sum::write(DPI_STREAM_WRITER& writer, bool with_origin) {
    return writer.add(content_, {file_, function_, &routines_, has_vtbl_ ? &vtbl_ : nullptr},
                      with_origin ? stored_origin(origin_) : std::string());
}
