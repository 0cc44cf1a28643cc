#include "common/text_buffer.h"

#include <algorithm>

void text_buffer::flush() {
    if (used_ != 0)
        std::fwrite(bytes_, 1, used_, stream_); // a failure is found when the stream is closed
    used_ = 0;
}

void text_buffer::put_large(std::string_view text) {
    flush();
    if (text.size() > kCapacity / 2) {
        std::fwrite(text.data(), 1, text.size(), stream_);
        return;
    }
    std::memcpy(bytes_, text.data(), text.size());
    used_ = text.size();
}

void text_buffer::fill(char c, std::size_t count) {
    while (count > 0) {
        if (used_ == kCapacity)
            flush();
        const std::size_t piece = std::min(count, kCapacity - used_);
        std::memset(bytes_ + used_, c, piece);
        used_ += piece;
        count -= piece;
    }
}

void text_buffer::put_padded(unsigned int value, std::size_t width) {
    char text[kLongestNumber];
    const std::size_t length =
        static_cast<std::size_t>(std::to_chars(text, text + sizeof text, value).ptr - text);
    if (length < width)
        fill(' ', width - length);
    put(std::string_view(text, length));
}

void text_buffer::put_percent(double value) {
    char text[400]; // the largest double has 309 digits before its point
    const std::to_chars_result result =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2);
    const std::size_t length = static_cast<std::size_t>(result.ptr - text);
    if (length < 6)
        fill(' ', 6 - length);
    put(std::string_view(text, length));
}

void text_buffer::put_escaped(std::string_view text) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '<' && text[i] != '>')
            continue;
        put(text.substr(start, i - start));
        put(text[i] == '<' ? std::string_view("&lt;") : std::string_view("&gt;"));
        start = i + 1;
    }
    put(text.substr(start));
}
