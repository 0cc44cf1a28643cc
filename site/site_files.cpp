#include "site/site_files.h"

#include "common/message.h"

#include <string>

namespace {

struct embedded_file {
    std::string_view name;
    std::string_view text;
};

} // namespace

// Written by CMakeLists.txt: one entry for each file.
static const embedded_file files[] = {
#include <site_files.inc>
};

std::string_view site_file(std::string_view name) {
    for (const embedded_file& file : files)
        if (file.name == name)
            return file.text;
    end_with_error("%s is not part of this program", std::string(name).c_str()); // infeasible
}
