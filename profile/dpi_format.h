// Layout of the dynamic profile file (Dpi file). Integers are little-endian.
//
// File header, 528 bytes at offset 0, then N records back to back. Strings are NUL-terminated, anywhere in
// the file, and referred to by their offset from the start of the file.
//
//   offset  size  file header
//        0     4  magic, PGOPTI_DPI_MAGIC
//        4     4  number of runs
//        8     4  N, number of records
//       12     4  a word that is carried along
//       16   512  NUL-terminated text
//
//   offset in a record          record header
//   32-bit (60 bytes)  64-bit (80 bytes)
//        0                  0   byte 0: flags, byte 1: format version (2 or 3)
//        4                  8   record size in bytes, header included
//        8                 12   R, routine entries
//       12                 16   B, block counters
//       16                 20   C2, counters of the second group
//       20                 24   C3, counters of the third group, each with a 96-byte value area
//       24                 32   flag word; bits 0 and 1 are kept in the index
//       28                 28   a word kept in the index
//       32                 40   offset of the source-file name (W bytes)
//       36                 48   offset of the key function name (W bytes)
//       40                 56   function address (8 bytes)
//       48                 64   virtual-table address (8 bytes)
//       56                 72   offset of the virtual-table name, 0 for none (W bytes)
//
// Record body, with W = 4 in a 32-bit and 8 in a 64-bit record; each area is padded to a multiple of W:
//   1. B + C2 + C3 counters of W bytes, of which the first B count the blocks, in block order: unsigned
//      integers in a 64-bit record, IEEE single-precision numbers in a 32-bit one
//   2. C3 value areas of 96 bytes
//   3. R offsets of routine names, W bytes each
//   4. R indices (4 bytes each) of the counters that hold the routines' entry counts
//   5. with PGOPTI_FLAG_LINES: B pairs of 4-byte numbers, line and column of each block
//
// The records are stored in ascending order of their key, file name ' function name ', as unsigned bytes.
#pragma once

#include <cstdint>

constexpr std::uint32_t PGOPTI_DPI_MAGIC = 0xDC0B;
constexpr std::uint32_t PGOPTI_HEADER_SIZE = 528;
constexpr std::uint32_t PGOPTI_HEADER_TEXT_SIZE = 512;

constexpr std::uint32_t PGOPTI_HEADER_MAGIC = 0;
constexpr std::uint32_t PGOPTI_HEADER_RUNS = 4;
constexpr std::uint32_t PGOPTI_HEADER_RECORDS = 8;
constexpr std::uint32_t PGOPTI_HEADER_WORD = 12;
constexpr std::uint32_t PGOPTI_HEADER_TEXT = 16;

constexpr std::uint8_t PGOPTI_FLAG_64 = 0x40;    ///< byte 0 of a record: 64-bit layout
constexpr std::uint8_t PGOPTI_FLAG_LINES = 0x10; ///< byte 0 of a record: block positions are present

/// Bytes that are read of every record before its size is known.
constexpr std::uint32_t PGOPTI_RECORD_HEAD_SIZE = 80;
/// Bytes of one value area.
constexpr std::uint32_t PGOPTI_VALUE_AREA_SIZE = 96;

/// Offsets of the header fields in one of the two record layouts.
struct PGOPTI_RECORD_LAYOUT {
    std::uint32_t width;       ///< W, bytes of a counter and of a string offset
    std::uint32_t header_size; ///< bytes of the record header
    std::uint8_t version;      ///< value of byte 1
    std::uint32_t size;
    std::uint32_t routines;
    std::uint32_t blocks;
    std::uint32_t second_group;
    std::uint32_t third_group;
    std::uint32_t flag_word;
    std::uint32_t word;
    std::uint32_t file_name;
    std::uint32_t key_func_name;
    std::uint32_t address; ///< of the function in the process that was counted; carried
    std::uint32_t vtbl_address;
    std::uint32_t vtbl_name;

    /// True for the 64-bit layout.
    constexpr bool is_pgo_64() const { return width == 8; }
};

inline constexpr PGOPTI_RECORD_LAYOUT PGOPTI_LAYOUT_32 = {4,  60, 2,  4,  8,  12, 16, 20,
                                                          24, 28, 32, 36, 40, 48, 56};
inline constexpr PGOPTI_RECORD_LAYOUT PGOPTI_LAYOUT_64 = {8,  80, 3,  8,  12, 16, 20, 24,
                                                          32, 28, 40, 48, 56, 64, 72};
