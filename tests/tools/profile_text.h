// Dynamic profiles written as text, for tests and for people.
//
// A profile is a list of lines; blank lines and lines that begin with "#" are skipped. Numbers are decimal,
// or hexadecimal after "0x".
//
//   header runs N [word N] [text REST-OF-LINE]   the file header; once, first
//   order any                                    allow records that are not in key order
//   source PATH                                  names a source file, in the order of the names in the file;
//                                                then records share these names, and routines that of their
//                                                function, as the program itself writes profiles
//   record 32 | record 64                        begins a record of this counter width, with these lines:
//     file PATH                                  source-file name, to the end of the line
//     function NAME                              key function name, to the end of the line
//     blocks LINE:COLUMN=COUNT ...               block counters with positions; may be repeated
//     blocks COUNT ...                           block counters of a record without line information
//     blocks 7:1=5 x 1000                        a thousand times what stands in front of the "x"
//     entry INDEX ...                            counters that hold the routines' entry counts; default: the
//                                                first one, and none in a record without blocks
//     routine NAME                               name of the next routine; default: the key function name
//     group2 COUNT ..., group3 COUNT ...         the two further groups of counters
//     flags N, word N, address N                 header fields, default 0
//     vtable ADDRESS NAME                        virtual-table address and name; default none
//     version N                                  format version, default 3 (64-bit) or 2 (32-bit)
//   set u8 | u32 | u64 PLACE VALUE               overwrites bytes of the finished file
//   cut PLACE                                    drops everything from there on
//
// A PLACE is an offset from the start of the file, or "rN+OFFSET" from the start of record N (0 is the
// first). Counts are unsigned integers in a 64-bit record and decimal fractions in a 32-bit one. Strings are
// stored behind the last record. "vexcov-profile show" writes this form.
//
// The writer shares nothing with the reader of profile/, so that the two cannot be wrong in the same way.
#pragma once

#include <string>
#include <string_view>

/// The bytes of the profile that `text` describes. Throws a std::exception that says what is wrong.
std::string compile_profile_text(std::string_view text);
