#include "profile/spi_file.h"

#include <algorithm>
#include <cstdio>

int SPI_STREAM::peek() {
    if (position_ == buffer_.size()) {
        const std::size_t kept = mark_ == kNoMark ? buffer_.size() : mark_;
        buffer_.erase(0, kept);
        position_ -= kept;
        if (mark_ != kNoMark)
            mark_ = 0;
        const std::size_t old_size = buffer_.size();
        // Growing with what must be kept keeps a long run of blanks in a head linear.
        const std::size_t wanted = old_size > kChunk ? old_size : kChunk;
        buffer_.resize(old_size + wanted);
        buffer_.resize(old_size + std::fread(buffer_.data() + old_size, 1, wanted, stream_));
        if (position_ == buffer_.size())
            return EOF;
    }
    return static_cast<unsigned char>(buffer_[position_]);
}

void SPI_STREAM::go_back() {
    position_ = mark_;
    mark_ = kNoMark;
}

static bool is_blank(int c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

static void skip_blanks(SPI_STREAM& stream) {
    while (is_blank(stream.peek()))
        stream.advance();
}

static bool read_string(SPI_STREAM& stream, std::string& text) {
    text.clear();
    skip_blanks(stream);
    while (stream.peek() != EOF) {
        const std::string_view rest = stream.at_hand();
        const auto end = std::find_if(rest.begin(), rest.end(), is_blank);
        text.append(rest.begin(), end);
        stream.advance(static_cast<std::size_t>(end - rest.begin()));
        if (end != rest.end())
            break;
    }
    return !text.empty();
}

/// A decimal number with an optional sign, after blanks. False when there is none or it exceeds 32 bits.
static bool read_number(SPI_STREAM& stream, std::int32_t* value) {
    skip_blanks(stream);
    const int sign = stream.peek();
    if (sign == '-' || sign == '+')
        stream.advance();
    std::int64_t magnitude = 0;
    bool digits = false;
    for (int c = stream.peek(); c >= '0' && c <= '9'; c = stream.peek()) {
        digits = true;
        magnitude = magnitude * 10 + (c - '0');
        if (magnitude > std::int64_t{INT32_MAX} + 1)
            return false;
        stream.advance();
    }
    const std::int64_t result = sign == '-' ? -magnitude : magnitude;
    if (!digits || result > INT32_MAX)
        return false;
    *value = static_cast<std::int32_t>(result);
    return true;
}

/// Takes a version head when one stands here. Anything else stays where it is.
static void skip_version_head(SPI_STREAM& stream) {
    if (stream.peek() != 'V')
        return;
    stream.mark();
    stream.advance();
    std::int32_t numbers[4] = {};
    for (std::int32_t& number : numbers) {
        if (!read_number(stream, &number)) {
            stream.go_back();
            return;
        }
    }
    if (numbers[0] == 1)
        stream.forget();
    else
        stream.go_back();
}

bool PGOPTI_SPI_Read_Line_Header(SPI_STREAM& stream, SPI_RECORD& record) {
    skip_version_head(stream);
    if (!read_string(stream, record.file_name) || !read_string(stream, record.second_name) ||
        !read_string(stream, record.proc_name))
        return false;
    if (!read_number(stream, &record.line) || !read_number(stream, &record.block_count))
        return false;
    skip_blanks(stream);
    const int flag = stream.peek();
    if (flag == EOF)
        return false;
    record.flag = static_cast<char>(flag);
    stream.advance();
    return true;
}

bool PGOPTI_SPI_Skip_Line(SPI_STREAM& stream) {
    for (int c = stream.peek(); c != EOF; c = stream.peek()) {
        stream.advance();
        if (c == '\n')
            return true;
    }
    return false;
}
