# Coverage of a CMake project with vexcov, in three lines:
#
#   find_package(vexcov REQUIRED)
#   link_libraries(vexcov::instrument)          # before the targets that are to be covered
#   vexcov_add_report(coverage)                 # cmake --build build --target coverage
#
# vexcov::instrument
#   An interface library with the compiler's and the linker's flags for coverage, for C and C++ with GCC and clang.
#   What links to it is instrumented: one target by target_link_libraries, all that follow by link_libraries.
#
# vexcov_add_report(NAME
#   [COMMAND ARGUMENT...]     what runs the tests, where a target stands for its program; default: ctest on the build tree
#   [OBJECTS PATH|TARGET...]  what is reported, run or not: directories, programs, libraries, or targets;
#                             default: the build tree
#   [DEPENDS TARGET...]       what is built first; default: all that the project builds
#   [OUTPUT DIR]              where the report is written; default: NAME in the build tree
#   [ROOT DIR]                where the sources are; default: the top of the source tree
#   [SITE]                    also writes the site, in OUTPUT/coverage-site, when the tests pass
#   [OPTIONS ARGUMENT...])    more options of vexcov-run, such as -counts or -prj "my project"
#   Adds the target NAME, which builds the project, runs the tests and makes the report. It fails as the tests do; the
#   report is made all the same.

cmake_minimum_required(VERSION 3.19)
include_guard(GLOBAL)

# Functions, so that no variable of the project changes.
function(_vexcov_find_programs)
  foreach(program IN ITEMS vexcov-run vexcov-site)
    string(MAKE_C_IDENTIFIER "${program}" variable)
    string(TOUPPER "${variable}" variable)
    # Installed, the programs are where the package says, or in the bin directory above this file; CMAKE_PROGRAM_PATH and
    # PATH are searched behind them.
    set(hints "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../../bin")
    if(TARGET vexcov::${program})
      get_target_property(location vexcov::${program} LOCATION)
      get_filename_component(location "${location}" DIRECTORY)
      list(PREPEND hints "${location}")
    endif()
    find_program(${variable} ${program} HINTS ${hints} DOC "Program of vexcov")
    mark_as_advanced(${variable})
  endforeach()
endfunction()

function(_vexcov_add_instrument)
  add_library(vexcov::instrument INTERFACE IMPORTED GLOBAL)
  # Counters that threads share would lose counts, and could become negative.
  set(gcc --coverage -fprofile-update=prefer-atomic)
  set(clang -fprofile-instr-generate -fcoverage-mapping)
  foreach(language IN ITEMS C CXX)
    set_property(TARGET vexcov::instrument APPEND PROPERTY INTERFACE_COMPILE_OPTIONS
      "$<$<COMPILE_LANG_AND_ID:${language},GNU>:${gcc}>" "$<$<COMPILE_LANG_AND_ID:${language},Clang>:${clang}>")
    set_property(TARGET vexcov::instrument APPEND PROPERTY INTERFACE_LINK_OPTIONS
      "$<$<LINK_LANG_AND_ID:${language},GNU>:--coverage>"
      "$<$<LINK_LANG_AND_ID:${language},Clang>:-fprofile-instr-generate>")
  endforeach()
endfunction()

_vexcov_find_programs()
if(NOT TARGET vexcov::instrument)
  _vexcov_add_instrument()
endif()

# The directories and files behind -objects.
function(_vexcov_objects result)
  set(objects)
  foreach(object IN LISTS ARGN)
    if(NOT TARGET "${object}")
      get_filename_component(object "${object}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
    elseif(CMAKE_C_COMPILER_ID STREQUAL "GNU" OR CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # GCC's notes stand beside the objects.
      get_target_property(directory ${object} BINARY_DIR)
      set(object "${directory}/CMakeFiles/${object}.dir")
    else()
      set(object "$<TARGET_FILE:${object}>")
    endif()
    list(APPEND objects -objects "${object}")
  endforeach()
  set(${result} "${objects}" PARENT_SCOPE)
endfunction()

# All targets of a directory, and of those below it, that are built by default.
function(_vexcov_built_targets result directory)
  get_property(targets DIRECTORY "${directory}" PROPERTY BUILDSYSTEM_TARGETS)
  get_property(below DIRECTORY "${directory}" PROPERTY SUBDIRECTORIES)
  set(built)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    get_target_property(excluded ${target} EXCLUDE_FROM_ALL)
    if(NOT excluded AND type MATCHES "_LIBRARY$|^EXECUTABLE$" AND NOT type STREQUAL "INTERFACE_LIBRARY")
      list(APPEND built ${target})
    endif()
  endforeach()
  foreach(child IN LISTS below)
    get_property(excluded DIRECTORY "${child}" PROPERTY EXCLUDE_FROM_ALL)
    if(NOT excluded)
      _vexcov_built_targets(more "${child}")
      list(APPEND built ${more})
    endif()
  endforeach()
  set(${result} "${built}" PARENT_SCOPE)
endfunction()

# Called at the end of the top directory, when all targets are known.
function(_vexcov_depend_on_all name)
  _vexcov_built_targets(targets "${CMAKE_SOURCE_DIR}")
  if(targets)
    add_dependencies(${name} ${targets})
  endif()
endfunction()

function(vexcov_add_report name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SITE" "OUTPUT;ROOT" "COMMAND;OBJECTS;DEPENDS;OPTIONS")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vexcov_add_report: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  foreach(program IN ITEMS VEXCOV_RUN VEXCOV_SITE)
    if(NOT ${program} AND (program STREQUAL "VEXCOV_RUN" OR arg_SITE))
      message(FATAL_ERROR "vexcov_add_report: no program for ${program}; install vexcov, or give -D${program}=PATH")
    endif()
  endforeach()
  if(NOT arg_COMMAND)
    set(arg_COMMAND "${CMAKE_CTEST_COMMAND}" --test-dir "${CMAKE_BINARY_DIR}" --output-on-failure)
    get_property(multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(multi_config)
      list(APPEND arg_COMMAND -C "$<CONFIG>")
    endif()
  endif()
  list(GET arg_COMMAND 0 program)
  if(TARGET "${program}")
    list(REMOVE_AT arg_COMMAND 0)
    list(PREPEND arg_COMMAND "$<TARGET_FILE:${program}>")
  endif()
  if(NOT arg_OBJECTS)
    set(arg_OBJECTS "${CMAKE_BINARY_DIR}")
  endif()
  if(NOT arg_OUTPUT)
    set(arg_OUTPUT "${name}")
  endif()
  if(NOT arg_ROOT)
    set(arg_ROOT "${CMAKE_SOURCE_DIR}")
  endif()
  get_filename_component(output "${arg_OUTPUT}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
  get_filename_component(root "${arg_ROOT}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  _vexcov_objects(objects ${arg_OBJECTS})
  set(site)
  if(arg_SITE)
    list(APPEND arg_OPTIONS -keep)
    set(site COMMAND "${CMAKE_COMMAND}" -E chdir "${root}" "${VEXCOV_SITE}" -spi "${output}/pgopti.spi"
      -dpi "${output}/pgopti.dpi" -o "${output}/coverage-site")
  endif()
  add_custom_target(${name}
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${output}"
    COMMAND "${VEXCOV_RUN}" ${objects} -root "${root}" -o "${output}" ${arg_OPTIONS} -- ${arg_COMMAND}
    ${site}
    WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}" COMMENT "Running the tests for their coverage" USES_TERMINAL VERBATIM)
  if(arg_DEPENDS)
    add_dependencies(${name} ${arg_DEPENDS})
  else()
    # A deferred call takes the values that variables have when it is made: hence the text.
    cmake_language(EVAL CODE "cmake_language(DEFER DIRECTORY [[${CMAKE_SOURCE_DIR}]] CALL _vexcov_depend_on_all [[${name}]])")
  endif()
endfunction()
