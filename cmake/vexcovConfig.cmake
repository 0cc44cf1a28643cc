# find_package(vexcov): the programs as vexcov::vexcov, vexcov::vexcov-run and so on, and what VexcovCoverage.cmake
# has, where it is installed.
include(${CMAKE_CURRENT_LIST_DIR}/vexcovTargets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/VexcovCoverage.cmake OPTIONAL)
