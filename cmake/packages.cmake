# What CPack makes of a build: a Debian package where the libraries are shared, else an archive that can be unpacked
# anywhere; and with CPackSourceConfig.cmake the source archive. scripts/release makes all of them and checks them. With
# SOURCE_DATE_EPOCH set, the same sources give the same bytes.
set(CPACK_PACKAGE_NAME vexcov)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR vexcov)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "code coverage reports, sites, exports and checks")
set(CPACK_PACKAGE_DESCRIPTION "vexcov shows which parts of a program its tests exercise. It joins the
execution counts of a run with the sources and writes an HTML report or
a web site in which each stretch of code is coloured by its coverage,
down to parts of lines. Other programs of the package run the tests,
export the coverage in the formats of other tools, add up the runs of
several machines and fail a build that is covered too little.

The counts come from programs that clang or GCC built for coverage, and
from LCOV traces.")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_THREADS 1) # threads would compress to other bytes on another machine

string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
set(CPACK_PACKAGE_FILE_NAME vexcov-${PROJECT_VERSION}-${system}-${CMAKE_SYSTEM_PROCESSOR})

set(VEXCOV_MAINTAINER "vexcov maintainers <maintainers@vexcov.invalid>" CACHE STRING
  "Name and address of who makes the Debian package")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${VEXCOV_MAINTAINER})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "clang, g++")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
if(VEXCOV_LIBRARIES STREQUAL "SHARED")
  set(CPACK_GENERATOR DEB)
  set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/debian_files.cmake)
  string(TIMESTAMP VEXCOV_CHANGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC) # of SOURCE_DATE_EPOCH, if there is one
  configure_file(cmake/debian_files.cmake.in debian_files.cmake @ONLY)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/sorted_archive.cmake)

string(REGEX REPLACE "([][+.*()^$?|{}\\\\])" "\\\\\\1" top "${PROJECT_SOURCE_DIR}")
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_IGNORE_FILES "^${top}/build/" "^${top}/\\.git/" "^${top}/\\.git$")
set(CPACK_SOURCE_PACKAGE_FILE_NAME vexcov-${PROJECT_VERSION})
include(CPack)
