// The dynamic profile file: opened, checked and indexed once, then asked for one record at a time
// (dpi_lookup.h). Names are kept once, not once for the name and once more in the key.
//
// An I/O failure ends the run (checked_io.h). So does a record whose version, size, areas or entry-counter
// indices are wrong, with "%s has old or incompatible file format". Every count is checked against the size
// of the record and the file before memory is asked for. A name at an offset that no seek can reach, 2^63 or
// more, is an I/O failure; names between the end of the file and there are empty.
#pragma once

#include "profile/dpi_record.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

/// Bytes of a name from which on it is not compared needlessly.
constexpr std::uint32_t PGOPTI_LONG_NAME = 4096;

/// One record of the index.
struct DPI_INDEX_ENTRY {
    const char* file_name;          ///< source-file name; owned by the handle, shared between entries
    const char* key_func_name;      ///< key function name; likewise
    std::uint64_t position;         ///< of the record in the file
    std::uint32_t size;             ///< of the record in bytes
    std::uint32_t word;             ///< of the record; carried, as its meaning is the instrumentation's
    std::uint32_t file_name_length; ///< in bytes
    std::uint32_t func_name_length; ///< in bytes
    float max_entry_count;          ///< the record's largest entry count per run; no page shows it yet
    std::uint8_t flags;             ///< bits 0 and 1 of the record's flag word; carried like `word`
};

class DPI_READER;

/// An open dynamic profile; owned by the caller of PGOPTI_Open_Dpi_File.
struct DPI_FILE {
    std::FILE* stream = nullptr; ///< holds the record lock
    /// Layout in which its records are handed out: that of the record read last while opening. Profiles have
    /// records of one width; in one that mixes widths, the last record decides how all of them are read.
    const PGOPTI_RECORD_LAYOUT* layout = &PGOPTI_LAYOUT_32;
    std::uint32_t num_records = 0;              ///< N
    std::uint32_t num_runs = 0;                 ///< runs added up in the counters
    std::uint32_t cursor = 0;                   ///< of the iteration by file/function pair
    std::uint32_t header_word = 0;              ///< carried, for whoever writes the profile again
    float max_entry_count = 0.0F;               ///< the largest of the index
    std::vector<DPI_INDEX_ENTRY> index;         ///< in file order
    bool is_ascending = false;                  ///< the keys of the index, each greater than the one before
    std::size_t expected = 0;                   ///< place in the index behind the entry found last
    std::vector<unsigned char> header_text;     ///< 512 bytes, carried likewise
    std::unique_ptr<DPI_READER> reader;         ///< cached access to the stream
    std::vector<std::unique_ptr<char[]>> names; ///< the text that the index points into

    DPI_FILE();
    ~DPI_FILE();
    DPI_FILE(const DPI_FILE&) = delete;
    DPI_FILE& operator=(const DPI_FILE&) = delete;
};

/// Opens and indexes a profile. Null when the file cannot be opened or, after the warning "%s has bad magic
/// number", when it is something else.
DPI_FILE* PGOPTI_Open_Dpi_File(const char* fileName);

/// Releases the file; null is ignored.
void PGOPTI_Close_Dpi_File(DPI_FILE* file);

/// False, after a message on standard error, for a profile that counts no run: none of its figures mean
/// anything.
bool pgopti_Check_Runs(const DPI_FILE& file);

/// Ends the run for a profile whose records are not what they should be.
[[noreturn]] void pgopti_Fail_Format(const char* fileName);

/// The largest entry count per run of a sound record (at least 0), also raising `*recordMax` to it, and the
/// larger of it and `fileMax` as the result.
float pgopti_Dpi_Max_Entry_Count(DPI_RECORD record, std::uint32_t numRuns, float* recordMax, float fileMax);
