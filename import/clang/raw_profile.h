// Raw profiles: what an instrumented process writes at its end. Versions 5 and 7 to 10, little-endian, of 32
// and 64 bits.
//
//   file     profiles, one behind the other, with zero bytes between them
//   profile  header, IDs, records, padding, counters, padding, [from 9: bitmap, padding], names, zeros to 8,
//            [10: tables, zeros to 8, names of tables, zeros to 8], values
//
//   header, u64 each             5      7, 8     9       10
//     magic                      0      0        0       0
//     version, variant bits      8      8        8       8
//     bytes of IDs               -      16       16      16
//     number of records          16     24       24      24
//     padding before counters    24     32       32      32
//     number of counters         32     40       40      40
//     padding behind counters    40     48       48      48
//     bytes of bitmap            -      -        56      56
//     padding behind bitmap      -      -        64      64
//     bytes of names             48     56       72      72
//     address of counters        56     64       80      80
//     number of tables           -      -        -       104
//     bytes of names of tables   -      -        -       112
//     size of the header         80     88       112     128
//
//   record             64 bits: 5-8   9    10     32 bits: 5-8   9    10
//     hash of name              0     0    0               0     0    0      u64
//     hash of structure         8     8    8               8     8    8      u64
//     counters                  16    16   16              16    16   16     u64, u32: an address
//     number of counters        40    48   48              28    32   32     u32
//     value sites               44    52   52              32    36   36     u16 for each kind: 2, 10: 3
//     size of a record          48    64   64              40    48   48
//
//   address  less that of the header it is the offset in the counters; from version 8 on both count from the
//            record, so that the offset of the record within the records is to be added
//   counter  8 bytes, or 1 with variant bit 60: 0 for code that was executed
//   ID       u64 length, bytes, zeros to 8: the build IDs of the program and its libraries
//   table    24 bytes, 32 bits: 16
//   values   for each record with a value site a chunk, whose size is its first u32
#pragma once

#include "import/clang/counter_store.h"

#include <functional>
#include <string>
#include <string_view>

/// Whether a file that begins with `start` is a raw profile, of any byte order.
bool is_raw_profile(std::string_view start);

/// What is read of raw profiles.
struct raw_profile_sinks {
    counter_store* counters;                        ///< gets the counters added
    std::function<void(std::string_view)> on_id;    ///< called for each build ID, from version 8 on
    std::function<void(std::string_view)> on_names; ///< called for each section of names (profile_names.h)
};

/// Reads the profiles in the `file`. Throws input_error where one is damaged, of a version that is not
/// supported, or of another kind than counters of source coverage.
void read_raw_profile(std::string_view file, const raw_profile_sinks& sinks);
