# What "cmake --install" puts where, in three components: programs, documentation and development.
include(GNUInstallDirs)

install(TARGETS ${VEXCOV_PROGRAMS} EXPORT vexcovTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)

# A shell looks for the completion of a program in a file of the program's name: the other names are links. zsh reads
# the names from the file.
# complete SHELL FILE FOLDER SUFFIX
function(complete shell file folder suffix)
  set(source ${PROJECT_SOURCE_DIR}/completions/${shell}/${file})
  if(NOT EXISTS ${source})
    return()
  endif()
  install(FILES ${source} DESTINATION ${folder} COMPONENT programs)
  if(shell STREQUAL "zsh")
    return()
  endif()
  set(links ${PROJECT_BINARY_DIR}/completions/${shell})
  file(MAKE_DIRECTORY ${links})
  foreach(program ${VEXCOV_PROGRAMS})
    if(NOT ${program}${suffix} STREQUAL ${file})
      file(CREATE_LINK ${file} ${links}/${program}${suffix} SYMBOLIC)
      install(FILES ${links}/${program}${suffix} DESTINATION ${folder} COMPONENT programs)
    endif()
  endforeach()
endfunction()
complete(bash vexcov ${CMAKE_INSTALL_DATADIR}/bash-completion/completions "")
complete(fish vexcov.fish ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d .fish)
complete(zsh _vexcov ${CMAKE_INSTALL_DATADIR}/zsh/site-functions "")

foreach(section 1 5)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/man/*.${section})
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT documentation)
endforeach()

# The documents keep their places to one another, so that their links hold.
file(GLOB texts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/*.md)
install(FILES ${texts} ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/NOTICE
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(FILES ${PROJECT_SOURCE_DIR}/bench/README.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/bench COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
foreach(script examples/cluster/merge_shards.py examples/wordcount/make-report)
  get_filename_component(folder ${script} DIRECTORY)
  install(PROGRAMS ${PROJECT_SOURCE_DIR}/${script}
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/${folder} COMPONENT documentation)
endforeach()
if(VEXCOV_LIBRARIES STREQUAL "ALL_STATIC")
  # NOTICE has the licences of the other libraries.
  file(GLOB licences /usr/share/common-licenses/GPL-3 /usr/share/common-licenses/LGPL-2.1)
  install(FILES ${licences} DESTINATION ${CMAKE_INSTALL_DOCDIR}/licences COMPONENT documentation)
  string(REGEX MATCH "^[0-9]+" version "${CMAKE_CXX_COMPILER_VERSION}")
  foreach(library gcc-${version}-base libc6-dev)
    install(FILES /usr/share/doc/${library}/copyright RENAME ${library}
      DESTINATION ${CMAKE_INSTALL_DOCDIR}/licences COMPONENT documentation OPTIONAL)
  endforeach()
endif()

# find_package(vexcov). The files are the same on every kind of machine.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_DATADIR}/cmake/vexcov)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vexcovConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
file(GLOB modules CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/[Vv]excov*.cmake)
install(FILES ${modules} ${PROJECT_BINARY_DIR}/vexcovConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)
install(EXPORT vexcovTargets NAMESPACE vexcov:: DESTINATION ${package_folder} COMPONENT development)
