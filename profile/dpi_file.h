// The dynamic profile file: opened, checked and indexed once, then asked for one record at a time.
//
// A record is found by its key, the text file name ' function name ', by binary search: the file must be
// stored in ascending key order, and the records of an unsorted file are missed. Names are kept once, not
// once for the name and once more in the key.
//
// An I/O failure ends the run (checked_io.h). So does a record whose version, size, areas or entry-counter
// indices are wrong, with "%s has old or incompatible file format". Every count is checked against the size
// of the record and the file before memory is asked for.
#pragma once

#include "profile/dpi_record.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One record of the index.
struct DPI_INDEX_ENTRY {
    const char* file_name;          ///< source-file name; owned by the handle, shared between entries
    const char* key_func_name;      ///< key function name; likewise
    std::uint64_t position;         ///< of the record in the file
    std::uint32_t size;             ///< of the record in bytes
    std::uint32_t word;             ///< copied from the record, not interpreted
    std::uint32_t file_name_length; ///< in bytes
    std::uint32_t func_name_length; ///< in bytes
    float max_entry_count;          ///< the record's largest entry count per run
    std::uint8_t flags;             ///< bits 0 and 1 of the record's flag word
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
    std::uint32_t header_word = 0;              ///< carried, not interpreted
    float max_entry_count = 0.0F;               ///< the largest entry count per run of any routine
    std::vector<DPI_INDEX_ENTRY> index;         ///< in file order
    bool is_ascending = false;                  ///< the keys of the index, each greater than the one before
    std::size_t expected = 0;                   ///< place in the index behind the entry found last
    std::vector<unsigned char> header_text;     ///< 512 bytes, carried
    std::unique_ptr<DPI_READER> reader;         ///< cached access to the stream
    std::vector<std::unique_ptr<char[]>> names; ///< the text that the index points into

    DPI_FILE();
    ~DPI_FILE();
    DPI_FILE(const DPI_FILE&) = delete;
    DPI_FILE& operator=(const DPI_FILE&) = delete;
};

/// One routine's record; owned by the caller of PGOPTI_Get_Segment.
struct DPI_SEGMENT {
    std::vector<unsigned char> record;            ///< the whole record as stored, sound in `layout`
    std::uint32_t num_runs = 0;                   ///< runs of the file
    const PGOPTI_RECORD_LAYOUT* layout = nullptr; ///< that of the file when the segment was asked for

    /// The record for the accessors; valid as long as the segment.
    DPI_RECORD view() const { return {record.data(), layout}; }
};

/// Opens and indexes a profile. Null when the file cannot be opened or, after the warning "%s has bad magic
/// number", when it is something else.
DPI_FILE* PGOPTI_Open_Dpi_File(const char* fileName);

/// Releases the file; null is ignored.
void PGOPTI_Close_Dpi_File(DPI_FILE* file);

/// The record of a routine, or null when the profile has none. `fileName` is the profile's, for messages.
DPI_SEGMENT* PGOPTI_Get_Segment(DPI_FILE* file, const char* fileName, std::string_view sourceFile,
                                std::string_view function);

/// Releases a segment; null is ignored.
void PGOPTI_Free_Segment(DPI_SEGMENT* segment);

/// Iterates the index in file order. Both results are null past the end; the strings belong to the handle.
void PGOPTI_Get_First_File_Function_Pair(DPI_FILE* file, const char** sourceFile, const char** function);
void PGOPTI_Get_Next_File_Function_Pair(DPI_FILE* file, const char** sourceFile, const char** function);

/// Compares a routine's key, file ' function ', with an index entry's, as unsigned bytes: negative, 0 or
/// positive.
int pgopti_Name_Compare(std::string_view file, std::string_view function, const DPI_INDEX_ENTRY& entry);

/// The index entry of a routine by binary search, or null.
const DPI_INDEX_ENTRY* pgopti_Get_Pgopti_Name(const DPI_FILE* file, std::string_view sourceFile,
                                              std::string_view function);

/// The NUL-terminated string at an offset of the file; one without NUL ends with the file, one at or beyond
/// the end is empty.
std::string pgopti_Read_String(DPI_FILE* file, const char* fileName, std::uint64_t offset);

/// The largest entry count per run of a sound record (at least 0), also raising `*recordMax` to it, and the
/// larger of it and `fileMax` as the result.
float pgopti_Dpi_Max_Entry_Count(DPI_RECORD record, std::uint32_t numRuns, float* recordMax, float fileMax);
