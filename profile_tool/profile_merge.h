// Adding up dynamic profiles.
//
// The records of up to kWays profiles at a time are merged in the order of their keys; what comes of so many
// is an intermediate profile without a name, which is merged with others in turn. So memory and open files
// do not grow with the number of profiles, and all but the first of the steps see a small part of the bytes.
#pragma once

#include "common/file_ptr.h"
#include "profile/dpi_stream_writer.h"
#include "profile_tool/merge_source.h"
#include "profile_tool/record_sum.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class profile_merge {
  public:
    /// Intermediate profiles are made in `directory`. `locked` as for DPI_CURSOR; `newest`: records that do
    /// not agree are no failure.
    profile_merge(const std::string& directory, const struct stat* locked, bool newest)
        : directory_(directory), locked_(locked), newest_(newest), sum_(directory) {}

    /// Adds up the profiles, none of which is open afterwards, so that whoever waits for the lock of another
    /// one holds none. A single profile is taken as it is. False with `*error` after a failure.
    bool collect(const std::vector<std::string>& profiles, std::string* error);

    /// Writes the sum: in the 32-bit layout when all profiles have it and it loses nothing. A failed write
    /// to `out` shows in the stream; false with `*error` for any other failure.
    bool write(std::FILE* out, std::string* error);

    /// When the newest of the profiles was changed, in ns.
    std::int64_t newest_time() const { return newest_time_; }

  private:
    static constexpr std::size_t kWays = 16;

    using source_ptr = std::unique_ptr<merge_source>;
    using source_list = std::vector<source_ptr>;

    bool fail(const std::string& what);
    bool open_profile(const std::string& path, std::uint32_t number, source_list* sources);
    void add_header(const DPI_CURSOR& cursor);
    bool merge(const source_list& sources, DPI_STREAM_WRITER& writer, bool is_last);
    bool take_record(merge_source& source, std::size_t* variants);
    bool write_variants(std::size_t count, DPI_STREAM_WRITER& writer, bool is_last);
    bool refuse(const record_sum& sum, const merge_source& source);
    bool fail_scratch(const char* what);
    bool reduce(source_list sources, file_ptr* result);
    bool open_intermediates(std::vector<file_ptr> streams, source_list* sources);
    bool add_intermediate(source_list sources, std::size_t level);
    bool add_levels(source_list* sources);
    bool collect_all();
    bool copy_only();
    bool write_sum(std::FILE* out);

    std::string directory_;
    const struct stat* locked_;
    bool newest_;
    const std::vector<std::string>* profiles_ = nullptr;
    std::string error_;
    std::vector<std::vector<file_ptr>> levels_; ///< intermediate profiles that wait; each stands for kWays of
                                                ///< the level below
    std::vector<record_sum> variants_;          ///< of one function; one, unless records do not agree
    std::int64_t newest_time_ = INT64_MIN;
    bool has_wide_ = false; ///< a profile has 64-bit records
    DPI_STREAM_WRITER sum_;
    file_ptr copy_; ///< of the only profile; then there is no sum

    // The header of the sum.
    bool has_header_ = false;
    std::uint32_t runs_ = 0;
    std::uint32_t header_word_ = 0;
    std::string header_text_;
};
