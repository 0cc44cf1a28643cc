#include "bench/scratch.h"

#include "common/source_file.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "profile/dpi_file.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

static std::string new_folder() {
    std::string folder = (std::filesystem::temp_directory_path() / "vexcov-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::fprintf(stderr, "cannot create %s\n", folder.c_str());
        std::exit(1);
    }
    return folder;
}

scratch_run::scratch_run(const tree_sizes& sizes)
    : folder_(new_folder()), previous_(std::filesystem::current_path().string()) {
    static char owner[] = "Nobody";
    static char address[] = "nobody";
    write_tree(folder_, sizes);
    std::filesystem::current_path(folder_);
    std::filesystem::create_directory("CodeCoverage");
    g_lpszMailName = owner;
    g_lpszMailAddr = address;
    release_source();
    pgofDPIFile = PGOPTI_Open_Dpi_File("pgopti.dpi");
    componentList = GetComponentList("pgopti.spi", &numComponents, nullptr, modules_);
}

scratch_run::~scratch_run() {
    PGOPTI_Close_Dpi_File(pgofDPIFile);
    pgofDPIFile = nullptr;
    release_source();
    std::filesystem::current_path(previous_);
    std::filesystem::remove_all(folder_);
}
