#include "profile/dpi_stream_writer.h"

#include "common/little_endian.h"
#include "common/printable.h"
#include "common/remedy.h"
#include "common/scratch_file.h"

#include <algorithm>
#include <cerrno>

void DPI_STREAM_WRITER::pile::put(std::string_view bytes) {
    buffer->put(bytes);
    size += bytes.size();
}

std::uint64_t DPI_STREAM_WRITER::pile::put_string(std::string_view text) {
    const std::uint64_t offset = size;
    put(text);
    buffer->put('\0');
    ++size;
    return offset;
}

bool DPI_STREAM_WRITER::fail(const std::string& what) {
    if (error_.empty())
        error_ = what;
    return false;
}

DPI_STREAM_WRITER::DPI_STREAM_WRITER(const std::string& directory) : directory_(directory) {
    for (pile* const each : {&records_, &file_names_, &names_}) {
        each->stream = open_scratch_file(directory);
        if (!each->stream) {
            fail("cannot create a temporary file in " + printable(directory) + ": " + reason_of(errno));
            return;
        }
        each->buffer = std::make_unique<text_buffer>(each->stream.get());
    }
}

bool DPI_STREAM_WRITER::add(DPI_CONTENT& content, const DPI_RECORD_NAMES& names, std::string_view behind) {
    if (!error_.empty())
        return false;
    if (DPI_encoded_size(content, PGOPTI_LAYOUT_64) + behind.size() > UINT32_MAX ||
        num_records_ == UINT32_MAX)
        return fail("function " + printable(names.function) + " of " + printable(names.file) +
                    " has no room in the profile; split it");
    if (num_records_ == 0 || names.file != last_file_) {
        last_file_ = names.file;
        last_file_offset_ = file_names_.put_string(names.file);
    }
    content.file_name = last_file_offset_;
    content.key_func_name = names_.put_string(names.function);
    for (std::size_t i = 0; i < content.routine_names.size(); ++i) {
        const std::optional<std::string>& routine = (*names.routines)[i];
        content.routine_names[i] = routine ? names_.put_string(*routine) : content.key_func_name;
    }
    content.vtbl_name = names.vtbl ? names_.put_string(*names.vtbl) + 1 : 0; // so that 0 remains for none
    bytes_.clear();
    DPI_encode(content, PGOPTI_LAYOUT_64, behind, &bytes_);
    records_.put(bytes_);
    narrow_size_ += DPI_encoded_size(content, PGOPTI_LAYOUT_32);
    is_exact_single_ = is_exact_single_ && std::all_of(content.counters.begin(), content.counters.end(),
                                                       [](std::uint64_t n) { return n <= DPI_EXACT_SINGLE; });
    ++num_records_;
    return true;
}

bool DPI_STREAM_WRITER::fits_narrow() const {
    return is_exact_single_ &&
           PGOPTI_HEADER_SIZE + narrow_size_ + file_names_.size + names_.size <= UINT32_MAX;
}

bool DPI_STREAM_WRITER::fail_scratch(const char* what) {
    return fail(std::string("cannot ") + what + " a temporary file in " + printable(directory_) + ": " +
                reason_of(errno));
}

/// Ends the writing of a pile and goes to its start.
bool DPI_STREAM_WRITER::finish(pile& collected) {
    collected.buffer->flush();
    return rewind_scratch_file(collected.stream.get()) || fail_scratch("write");
}

/// Reads the next record of the pile.
bool DPI_STREAM_WRITER::read_record(std::vector<char>* bytes) {
    constexpr std::size_t head = PGOPTI_LAYOUT_64.header_size;
    bytes->resize(head);
    errno = 0;
    std::FILE* const stream = records_.stream.get();
    if (std::fread(bytes->data(), 1, head, stream) == head) {
        bytes->resize(little_endian_at<std::uint32_t>({bytes->data(), head}, PGOPTI_LAYOUT_64.size));
        if (std::fread(bytes->data() + head, 1, bytes->size() - head, stream) == bytes->size() - head)
            return true;
    }
    return fail_scratch("read");
}

bool DPI_STREAM_WRITER::copy_records(text_buffer& out, const PGOPTI_RECORD_LAYOUT& layout) {
    const std::uint64_t files = PGOPTI_HEADER_SIZE + (layout.is_pgo_64() ? records_.size : narrow_size_);
    const std::uint64_t names = files + file_names_.size;
    std::vector<char> bytes;
    DPI_CONTENT content;
    for (std::uint32_t i = 0; i < num_records_; ++i) {
        if (!read_record(&bytes))
            return false;
        const DPI_RECORD record = {reinterpret_cast<const unsigned char*>(bytes.data()), &PGOPTI_LAYOUT_64};
        DPI_decode(record, &content);
        const char* const end = reinterpret_cast<const char*>(DPI_areas_get(record).end);
        const std::string_view behind(end, static_cast<std::size_t>(bytes.data() + bytes.size() - end));
        content.file_name += files;
        content.key_func_name += names;
        if (content.vtbl_name != 0)
            content.vtbl_name += names - 1;
        for (std::uint64_t& routine : content.routine_names)
            routine += names;
        bytes_.clear();
        DPI_encode(content, layout, behind, &bytes_);
        out.put(bytes_);
    }
    return true;
}

bool DPI_STREAM_WRITER::write(std::FILE* out, DPI_HEADER header, const PGOPTI_RECORD_LAYOUT& layout) {
    if (!error_.empty() || !finish(records_) || !finish(file_names_) || !finish(names_))
        return false;
    text_buffer buffer(out);
    header.records = num_records_;
    pgopti_Put_Header(buffer, header);
    if (!copy_records(buffer, layout))
        return false;
    buffer.flush();
    for (const pile* const names : {&file_names_, &names_})
        if (!copy_scratch_file(names->stream.get(), out))
            return fail_scratch("read");
    // Readers take 80 bytes of a record before they know that it has fewer.
    const std::size_t missing = num_records_ == 0 ? 0 : PGOPTI_RECORD_HEAD_SIZE - layout.header_size;
    for (std::uint64_t size = file_names_.size + names_.size; size < missing; ++size)
        buffer.put('\0');
    return true;
}
