#include "common/text_buffer.h"

#include <algorithm>
#include <cmath>

void text_buffer::hand_on(const char* bytes, std::size_t size) {
    if (stream_)
        std::fwrite(bytes, 1, size, stream_); // a failure is found when the stream is closed
    else
        text_->append(bytes, size);
}

void text_buffer::flush() {
    if (used_ != 0)
        hand_on(bytes_, used_);
    used_ = 0;
}

void text_buffer::put_large(std::string_view text) {
    flush();
    if (text.size() > kCapacity / 2) {
        hand_on(text.data(), text.size());
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
    if (kCapacity - used_ < kLongestNumber)
        flush();
    std::size_t digits = 1;
    for (unsigned int rest = value / 10; rest != 0; rest /= 10)
        ++digits;
    char* const start = bytes_ + used_;
    char* at = start + std::max(digits, width);
    used_ += std::max(digits, width);
    do {
        *--at = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (at != start)
        *--at = ' ';
}

void text_buffer::put_percent(double value) {
    // The product is off by less than 1e-9. Unless it lies that close to the middle between two whole
    // numbers, it shows which is the nearest one; the exact conversion takes ten times as long.
    const double hundredths = value * 100;
    if (value > 0 && value < 1000 && std::abs(hundredths - std::floor(hundredths) - 0.5) > 1e-6) {
        const unsigned int nearest = static_cast<unsigned int>(hundredths + 0.5);
        put_padded(nearest / 100, 3);
        const unsigned int fraction = nearest % 100;
        const char text[] = {'.', static_cast<char>('0' + fraction / 10),
                             static_cast<char>('0' + fraction % 10)};
        return put(std::string_view(text, sizeof text));
    }
    char text[400]; // the largest double has 309 digits before its point
    const std::to_chars_result result =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2);
    const std::size_t length = static_cast<std::size_t>(result.ptr - text);
    if (length < 6)
        fill(' ', 6 - length);
    put(std::string_view(text, length));
}

void text_buffer::put_escaped(std::string_view text) {
    // Deliberate: '&' stays as it is, so that an entity in a source text shows as the character it stands
    // for. Each of the two characters is searched for once up to where it stands, so that the text is passed
    // over in large steps.
    std::size_t start = 0;
    std::size_t less = text.find('<');
    std::size_t greater = text.find('>');
    while (less != greater) { // until both are npos
        const std::size_t next = std::min(less, greater);
        put(text.substr(start, next - start));
        start = next + 1;
        if (next == less) {
            put("&lt;");
            less = text.find('<', start);
        } else {
            put("&gt;");
            greater = text.find('>', start);
        }
    }
    put(text.substr(start));
}
