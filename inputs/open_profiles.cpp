#include "inputs/open_profiles.h"

#include "common/fatal.h"
#include "common/message.h"
#include "profile/dpi_file.h"

#include <cstdio>

/// `option` is the one that names it.
static DPI_FILE* open_profile(const char* name, const char* option) {
    DPI_FILE* file = PGOPTI_Open_Dpi_File(name);
    if (!file) {
        if (messages_are_named())
            end_with_error("cannot find the dynamic profile %s; name it with %s", printable(name).c_str(),
                           option);
        std::fprintf(stderr, "Couldn't find the dpi file %s!\n", name);
        pgt_Exit(1);
    }
    return file;
}

DPI_FILE* open_dynamic_profile(const char* name) {
    return open_profile(name, "-dpi");
}

DPI_FILE* open_reference_profile(const char* name, DPI_FILE* profile) {
    DPI_FILE* const reference = open_profile(name, "-ref");
    // Deliberate: a run reads all its profiles in one width, that of the profile opened last, as only counts
    // of one width can be compared.
    if (reference->num_records != 0)
        profile->layout = reference->layout;
    return reference;
}

void probe_static_profile(const char* name) {
    std::FILE* file = std::fopen(name, "r");
    if (!file) {
        if (messages_are_named())
            end_with_error("cannot find the static profile %s; name it with -spi", printable(name).c_str());
        std::fprintf(stderr, "Couldn't find the spi file %s!\n", name);
        pgt_Exit(1);
    }
    std::fclose(file);
}
