// The sections of an ELF file that hold its coverage mapping: programs, shared libraries, object files and
// members of archives, little-endian, of 32 and 64 bits.
//
//   header of the file          64 bits      32 bits
//     7f 'E' 'L' 'F'              0            0
//     class: 1 = 32, 2 = 64 bits  4            4       u8
//     data: 1 = little-endian     5            5       u8
//     type: 1 object, 2 program,  16           16      u16
//       3 program or library
//     offset of section headers   40 (u64)     32 (u32)
//     size of a section header    58           46      u16
//     number of sections          60           48      u16, 0: is in the size of section 0
//     section of the names        62           50      u16, 0xffff: is in the link of section 0
//
//   header of a section         64 bits      32 bits
//     name, offset into names     0            0       u32
//     type                        4            4       u32: 7 note, 8 no bytes in the file
//     flags                       8 (u64)      8 (u32) 0x800 compressed
//     offset in the file          24 (u64)     16 (u32)
//     size                        32 (u64)     20 (u32)
//     link                        40           24      u32
//
//   compressed section          64 bits      32 bits
//     type: 1 zlib                0            0       u32
//     size unpacked               8 (u64)      4 (u32)
//     stream                      24           12
//
//   note: u32 size of name, u32 size of text, u32 type (3 = build ID); name "GNU\0", text, both padded to 4
#pragma once

#include "import/clang/file_bytes.h"

#include <string>
#include <string_view>

/// What the linker did with a file.
enum class elf_type { object, program, other };

/// The contents of all sections of a kind, one behind the other, each at a multiple of 8.
struct mapped_sections {
    elf_type type;
    std::string build_id;  ///< bytes; empty: has none
    byte_buffer tables;    ///< __llvm_covmap: the file table of each translation unit
    byte_buffer functions; ///< __llvm_covfun: the mapping of each function
    byte_buffer names;     ///< __llvm_prf_names: compressed names of functions; may be stripped
};

/// Whether a file that begins with `start` is an ELF file.
bool is_elf(std::string_view start);

/// Replaces `*result` by the sections of `file`. Throws not_of_interest where the file has none of them or
/// has lost its mapping, and input_error where it is damaged or of a kind that is not supported.
void read_mapped_sections(const file_part& file, mapped_sections* result);

/// The build ID of `file`, empty where there is none or the file is no program.
std::string read_build_id(const file_part& file);
