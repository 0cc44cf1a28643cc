#include "import/write_pair.h"

#include "import/import_message.h"
#include "profile/profile_pair.h"

void write_pair(PGOPTI_PROFILE profile, const import_options& options) {
    profile.num_runs = options.runs;
    std::string error;
    if (!PGOPTI_Write_Profiles(profile, PGOPTI_LAYOUT_64, options.dpi_file, options.spi_file, &error))
        import_error("%s", error.c_str());
}
