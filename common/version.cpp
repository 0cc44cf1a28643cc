#include "common/version.h"

const char* program_version() {
    return VEXCOV_VERSION;
}
