#include "profile_tool/merge_source.h"

#include "common/little_endian.h"
#include "common/printable.h"

#include <utility>

std::string stored_origin(const merge_origin& origin) {
    std::string bytes(kOriginSize, '\0');
    store_number(bytes.data(), static_cast<std::uint64_t>(origin.time), 8);
    store_number(bytes.data() + 8, origin.number, 4);
    return bytes;
}

bool merge_source::fail(const std::string& what) {
    error_ = what;
    return false;
}

bool merge_source::open(const std::string& path, std::uint32_t number, const struct stat* locked) {
    number_ = number;
    return cursor_.open(path, locked);
}

bool merge_source::open_intermediate(file_ptr stream) {
    is_intermediate_ = true;
    return cursor_.open(std::move(stream), "a temporary file");
}

bool merge_source::next() {
    previous_key_.assign(cursor_.key());
    if (!cursor_.next())
        return false;
    if (layout_ && layout_ != cursor_.record().layout)
        return fail(cursor_.name() + " holds records of both widths; import it again");
    const int order = layout_ ? cursor_.key().compare(previous_key_) : 1;
    layout_ = cursor_.record().layout;
    if (is_intermediate_ || order > 0)
        return true;
    const std::string function =
        "function " + printable(cursor_.function_name()) + " of " + printable(cursor_.file_name());
    if (order == 0)
        return fail(cursor_.name() + " holds " + function + " twice; import it again");
    return fail(cursor_.name() + ": the records are not in the order of their keys, from " + function +
                " on; import it again");
}

merge_origin merge_source::origin() const {
    if (!is_intermediate_)
        return {cursor_.modified(), number_};
    const DPI_RECORD record = cursor_.record();
    const unsigned char* const stored = record.bytes + DPI_record_size_get(record) - kOriginSize;
    return {static_cast<std::int64_t>(read_u64(stored)), read_u32(stored + 8)};
}
