// The static profile file (Spi file): text, one line for each instrumented routine.
//
//   source-file name, second name, routine name, first line, number of blocks, flag character
//
// The fields are separated by white space; what follows them on the line is skipped. A record may be preceded
// by a version head, "V1" and the sizes of the three strings, which this reader does not need: its buffers
// grow as the strings do.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

/// One record. The strings belong to the reader and are reused for the next record.
struct SPI_RECORD {
    std::string file_name;
    std::string second_name; ///< stands in every line; not interpreted
    std::string proc_name;
    std::int32_t line = 0;
    std::int32_t block_count = 0;
    char flag = '\0'; ///< carried, not interpreted
};

/// Characters of an open file, with room to go back over a version head that was none.
class SPI_STREAM {
  public:
    explicit SPI_STREAM(std::FILE* stream) : stream_(stream) {}

    /// The next character without taking it, or EOF.
    int peek();
    /// Takes the character that peek() showed.
    void advance() { ++position_; }
    /// The characters that can be taken without reading on; the first is the one that peek() showed.
    std::string_view at_hand() const { return std::string_view(buffer_).substr(position_); }
    /// Takes `count` of the characters at hand.
    void advance(std::size_t count) { position_ += count; }
    /// Starts to remember what is taken; until go_back or forget.
    void mark() { mark_ = position_; }
    /// Gives back what was taken since mark().
    void go_back();
    void forget() { mark_ = kNoMark; }

  private:
    static constexpr std::size_t kNoMark = ~std::size_t{0};
    static constexpr std::size_t kChunk = std::size_t{1} << 16;

    std::FILE* stream_;
    std::string buffer_;
    std::size_t position_ = 0;
    std::size_t mark_ = kNoMark; ///< position in buffer_ that must not be dropped
};

/// Reads one optional version head and one record. False when fewer than six fields were read or a number
/// does not fit in 32 bits.
bool PGOPTI_SPI_Read_Line_Header(SPI_STREAM& stream, SPI_RECORD& record);

/// Skips the rest of the line with its newline. False at the end of the file.
bool PGOPTI_SPI_Skip_Line(SPI_STREAM& stream);
