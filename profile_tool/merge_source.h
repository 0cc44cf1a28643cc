// One of the profiles that are merged: its records one after the other, ascending by key.
#pragma once

#include "common/file_ptr.h"
#include "profile/dpi_cursor.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Where counts come from, for the choice between records that do not agree.
struct merge_origin {
    std::int64_t time = 0;    ///< last change of the profile, in ns; of several, the last
    std::uint32_t number = 0; ///< of the profile on the command line; of several, the lowest
};

/// Bytes of an origin behind a record of an intermediate profile.
constexpr std::size_t kOriginSize = 12;
std::string stored_origin(const merge_origin& origin);

class merge_source {
  public:
    /// Opens a profile of the command line. `locked` as for DPI_CURSOR. False with error() after a failure.
    bool open(const std::string& path, std::uint32_t number, const struct stat* locked);

    /// Opens an intermediate profile, whose records have their origins behind them. Keys may be equal there.
    bool open_intermediate(file_ptr stream);

    /// Goes to the next record. False at the end and after a failure; a profile whose keys do not ascend, or
    /// whose records have both widths, is one.
    bool next();

    const std::string& error() const { return error_.empty() ? cursor_.error() : error_; }
    DPI_CURSOR& cursor() { return cursor_; }
    std::string_view key() const { return cursor_.key(); }

    /// The origin of the present record.
    merge_origin origin() const;

    /// True when a profile of the command line has 64-bit records.
    bool is_wide() const { return !is_intermediate_ && layout_ && layout_->is_pgo_64(); }

  private:
    bool fail(const std::string& what);

    DPI_CURSOR cursor_;
    std::string error_;
    std::uint32_t number_ = 0;
    bool is_intermediate_ = false;
    const PGOPTI_RECORD_LAYOUT* layout_ = nullptr;
    std::string previous_key_;
};
