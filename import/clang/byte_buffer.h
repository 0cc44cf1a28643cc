// Memory for what is read of files: a buffer that is filled anew again and again, and bytes and objects that
// are kept for good. None touches memory before there is something to put into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

/// A row of bytes that grows at its end. Emptied, it keeps its memory for what follows.
class byte_buffer {
  public:
    std::size_t size() const { return size_; }
    std::string_view view() const { return {bytes_.get(), size_}; }
    void clear() { size_ = 0; }

    /// Makes room for `size` bytes more, whose values are undefined, and returns the first. All earlier
    /// places are invalid.
    char* extend(std::size_t size) {
        if (size > capacity_ - size_)
            grow(size_ + size);
        size_ += size;
        return bytes_.get() + size_ - size;
    }

    /// Takes away what is behind the first `size` bytes.
    void shorten(std::size_t size) { size_ = size; }

    void append(std::string_view bytes) {
        if (!bytes.empty())
            std::memcpy(extend(bytes.size()), bytes.data(), bytes.size());
    }

  private:
    void grow(std::size_t least) {
        const std::size_t capacity = least < capacity_ * 2 ? capacity_ * 2 : least;
        std::unique_ptr<char[]> bytes = std::make_unique_for_overwrite<char[]>(capacity);
        if (size_ != 0)
            std::memcpy(bytes.get(), bytes_.get(), size_);
        bytes_ = std::move(bytes);
        capacity_ = capacity;
    }

    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

/// Rows of objects of a simple type, none of which ever moves.
template <typename T> class row_store {
  public:
    /// A new row of `size` objects, whose values are undefined; never null.
    T* add(std::size_t size) {
        if (size > kBlock / 4) // would waste the rest of a block
            return blocks_.emplace_back(std::make_unique_for_overwrite<T[]>(size)).get();
        if (size > left_ || !next_) {
            next_ = blocks_.emplace_back(std::make_unique_for_overwrite<T[]>(kBlock)).get();
            left_ = kBlock;
        }
        T* const row = next_;
        next_ += size;
        left_ -= size;
        return row;
    }

  private:
    static constexpr std::size_t kBlock = (std::size_t{1} << 16) / sizeof(T);

    std::vector<std::unique_ptr<T[]>> blocks_;
    T* next_ = nullptr;
    std::size_t left_ = 0;
};

/// Numbered objects of a simple type, none of which ever moves.
template <typename T> class numbered_store {
  public:
    std::uint32_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    T& operator[](std::uint32_t number) { return blocks_[number / kBlock][number % kBlock]; }
    const T& operator[](std::uint32_t number) const { return blocks_[number / kBlock][number % kBlock]; }

    /// The number of the object, which is the next one.
    std::uint32_t add(const T& object) {
        if (size_ % kBlock == 0)
            blocks_.push_back(std::make_unique_for_overwrite<T[]>(kBlock));
        blocks_.back()[size_ % kBlock] = object;
        return size_++;
    }

  private:
    static constexpr std::uint32_t kBlock = 1024;

    std::vector<std::unique_ptr<T[]>> blocks_;
    std::uint32_t size_ = 0;
};

/// Bytes that stay where they are.
class byte_store {
  public:
    /// A copy of `bytes`, valid as long as this.
    std::string_view keep(std::string_view bytes) {
        if (bytes.empty())
            return {};
        char* const row = rows_.add(bytes.size());
        std::memcpy(row, bytes.data(), bytes.size());
        return {row, bytes.size()};
    }

  private:
    row_store<char> rows_;
};
