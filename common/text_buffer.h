// A page buffer: collects text and hands it to a stream, or a string, in large pieces.
//
// For the inner loops of the page and export writers, where a stdio call for each piece would cost more than
// the text. Fixed heads and tails of a page are written with fputs and fprintf as usual; flush() (or the end
// of the buffer's life) must come before anything else is written to the stream.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

class text_buffer {
  public:
    /// Writes to `stream`, which must outlive the buffer.
    explicit text_buffer(std::FILE* stream) : stream_(stream) {}
    /// Appends to `text`, which must outlive the buffer. Throws std::bad_alloc where there is no memory for
    /// it, and needs a flush() at the end.
    explicit text_buffer(std::string* text) : text_(text) {}
    text_buffer(const text_buffer&) = delete;
    text_buffer& operator=(const text_buffer&) = delete;
    ~text_buffer() {
        if (stream_)
            flush();
    }

    /// Appends one byte.
    void put(char c) {
        if (used_ == kCapacity)
            flush();
        bytes_[used_++] = c;
    }

    /// Appends `text` as it stands.
    void put(std::string_view text) {
        if (text.size() > kCapacity - used_)
            return put_large(text);
        std::memcpy(bytes_ + used_, text.data(), text.size());
        used_ += text.size();
    }

    /// Appends `count` copies of `c`.
    void fill(char c, std::size_t count);

    /// Appends a number in decimal, as "%d" or "%u" would.
    template <typename Integer> void put_number(Integer value) {
        if (kCapacity - used_ < kLongestNumber)
            flush();
        used_ =
            static_cast<std::size_t>(std::to_chars(bytes_ + used_, bytes_ + kCapacity, value).ptr - bytes_);
    }

    /// Appends a number in at least `width` characters (at most 24), with leading blanks, as "%6u" would.
    void put_padded(unsigned int value, std::size_t width);

    /// Appends a percentage with two decimals in at least six characters, as "%6.2f" would.
    void put_percent(double value);

    /// Appends text with '<' as "&lt;" and '>' as "&gt;"; every other byte, '&' included, stays as it is.
    void put_escaped(std::string_view text);

    /// Room for `size` bytes, far less than the buffer holds, to be written in place; taken() tells how far
    /// they reach.
    char* room(std::size_t size) {
        if (size > kCapacity - used_)
            flush();
        return bytes_ + used_;
    }
    void taken(const char* end) { used_ = static_cast<std::size_t>(end - bytes_); }

    /// Hands on what was collected.
    void flush();

  private:
    static constexpr std::size_t kCapacity = std::size_t{1} << 17;
    static constexpr std::size_t kLongestNumber = 24;

    void put_large(std::string_view text);
    void hand_on(const char* bytes, std::size_t size);

    std::FILE* stream_ = nullptr;
    std::string* text_ = nullptr;
    std::size_t used_ = 0;
    char bytes_[kCapacity];
};
