#include "profile/profile_pair.h"

#include "common/replace_files.h"
#include "profile/dpi_writer.h"
#include "profile/spi_writer.h"

#include <vector>

bool PGOPTI_Replace_Profiles(const profile_names& names, profile_lock& lock, const profile_contents& write,
                             std::string* error) {
    error->clear();
    std::vector<std::string> targets = {names.dpi};
    if (!names.spi.empty())
        targets.push_back(names.spi);
    file_replacement files(targets);
    if (files.check_targets() && !lock.is_held() && !lock.wait(names.dpi, error))
        return false;
    const auto write_file = [&](std::size_t i, const profile_content_writer& content) {
        std::FILE* const stream = files.open(i);
        return stream && content(stream, error) && files.close(stream);
    };
    const bool done = files.error().empty() && write_file(0, write.dpi) &&
                      (names.spi.empty() || write_file(1, write.spi)) && files.replace();
    if (!done && error->empty())
        *error = files.error();
    return done;
}

bool PGOPTI_Write_Profiles(const PGOPTI_PROFILE& profile, const PGOPTI_RECORD_LAYOUT& layout,
                           const std::string& dpi_file, const std::string& spi_file, std::string* error) {
    const DPI_WRITER dpi(profile, layout);
    if (dpi.too_large()) {
        *error = "function " + dpi.too_large()->name + " has too many blocks; split it";
        return false;
    }
    profile_lock lock;
    const auto write_dpi = [&](std::FILE* stream, std::string*) {
        dpi.write(stream);
        return true;
    };
    const auto write_spi = [&](std::FILE* stream, std::string*) {
        PGOPTI_SPI_Write(stream, profile);
        return true;
    };
    return PGOPTI_Replace_Profiles({dpi_file, spi_file}, lock, {write_dpi, write_spi}, error);
}
