// A folder for one benchmark to work in, and the state that a run of the program would have set up there.
#pragma once

#include "bench/tree.h"
#include "profile/module_list.h"

/// A tree in a new temporary folder, which is the working directory while the object lives. Both profiles are
/// open as in a run: pgofDPIFile, and componentList with the routines of the tree.
class scratch_run {
  public:
    explicit scratch_run(const tree_sizes& sizes);
    ~scratch_run();
    scratch_run(const scratch_run&) = delete;
    scratch_run& operator=(const scratch_run&) = delete;

  private:
    std::string folder_;
    module_list modules_;
    std::string previous_; ///< the working directory to go back to
};
