#include "import/write_pair.h"

#include "common/message.h"
#include "import/writable_names.h"
#include "profile/profile_pair.h"

void write_pair(PGOPTI_PROFILE profile, const import_options& options) {
    const replaced_names replaced = make_names_writable(&profile);
    profile.num_runs = options.runs;
    std::string error;
    if (!PGOPTI_Write_Profiles(profile, PGOPTI_LAYOUT_64, options.dpi_file, options.spi_file, &error))
        end_with_error("%s", error.c_str());
    warn_of_replaced_names(replaced);
}
