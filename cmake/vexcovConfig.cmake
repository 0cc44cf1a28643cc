# find_package(vexcov): the programs as vexcov::vexcov, vexcov::vexcov-run and so on, where they are installed, and the
# flags and the target of VexcovCoverage.cmake.
include("${CMAKE_CURRENT_LIST_DIR}/vexcovTargets.cmake" OPTIONAL)
include("${CMAKE_CURRENT_LIST_DIR}/VexcovCoverage.cmake")
if(NOT VEXCOV_RUN)
  set(vexcov_FOUND FALSE)
  set(vexcov_NOT_FOUND_MESSAGE "the program vexcov-run was not found; give -DVEXCOV_RUN=PATH")
endif()
