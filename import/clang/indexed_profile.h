// Indexed profiles: what llvm-profdata merge writes. Versions 4 to 13; all numbers are u64 but for those that
// say otherwise.
//
//   file     header, summary, buckets, number of buckets, number of entries
//   header   0   ff 'l' 'p' 'r' 'o' 'f' 'i' 81
//            8   version, variant bits
//            24  kind of hash: 0
//            32  offset of the number of buckets
//            size: up to version 7 40, 8 48, 9 56, 10 and 11 64, 12 and 13 72
//   summary  a, b, 8 a + 24 b bytes
//   bucket   those without an entry take no bytes; u16 number of entries, the entries
//   entry    hash of name, size of name, size of data, name, data
//   data     for each structure that the function had: its hash, number of counters, the counters,
//            [from 11: number of bitmap bytes, the bytes, each as u64], values, whose size is their first u32
#pragma once

#include "import/clang/counter_store.h"

#include <functional>
#include <string_view>

/// Whether a file that begins with `start` is an indexed profile.
bool is_indexed_profile(std::string_view start);

/// Adds the counters in the `file` to `counters` and calls `on_name` for each function, with the hash of its
/// name. Throws input_error where it is damaged, of a version that is not supported, or of another kind than
/// counters of source coverage.
void read_indexed_profile(std::string_view file, counter_store* counters,
                          const std::function<void(std::uint64_t hash, std::string_view name)>& on_name);
