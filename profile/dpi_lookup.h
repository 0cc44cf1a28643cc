// Look-up in an opened dynamic profile, one record at a time.
//
// A record is found by its key, the text file name ' function name ', by binary search: the file must be
// stored in ascending key order, and the records of an unsorted file are missed.
#pragma once

#include "profile/dpi_file.h"
#include "profile/dpi_record.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// One routine's record; owned by the caller of PGOPTI_Get_Segment.
struct DPI_SEGMENT {
    std::vector<unsigned char> record; ///< the whole record as stored, sound in `layout`
    std::uint32_t num_runs = 0;        ///< runs of the file; for whoever has the segment but not the file
    const PGOPTI_RECORD_LAYOUT* layout = nullptr; ///< that of the file when the segment was asked for

    /// The record for the accessors; valid as long as the segment.
    DPI_RECORD view() const { return {record.data(), layout}; }
};

/// The record of a routine, or null when the profile has none. `fileName` is the profile's, for messages. A
/// record that is not sound in the layout of the file ends the run as it does when the file is opened, and so
/// does one with a name that no seek can reach, its routine names included.
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

/// True when the keys ascend, as they do in a sound profile: then no two are equal. Long names count as
/// equal: they may overlap in the file, and to compare them could take out of proportion to its size.
bool pgopti_Has_Ascending_Keys(const std::vector<DPI_INDEX_ENTRY>& index);

/// The index entry of a routine by binary search, or null.
const DPI_INDEX_ENTRY* pgopti_Get_Pgopti_Name(const DPI_FILE* file, std::string_view sourceFile,
                                              std::string_view function);
