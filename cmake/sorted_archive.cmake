# Packs an archive anew with its files in the order of their names, owned by nobody in particular, for all to read; run by
# CPack, which takes them as the file system lists them.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH} OR NOT CPACK_GENERATOR STREQUAL "TGZ")
  return()
endif()
foreach(archive ${CPACK_PACKAGE_FILES})
  set(folder ${archive}.files)
  file(MAKE_DIRECTORY ${folder})
  execute_process(COMMAND tar -C ${folder} -xpf ${archive} COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB names RELATIVE ${folder} ${folder}/*)
  execute_process(
    COMMAND tar -C ${folder} --sort=name --owner=0 --group=0 --numeric-owner --mode=u+w,go=rX
      --mtime=@$ENV{SOURCE_DATE_EPOCH} -cf - ${names}
    COMMAND gzip -9n
    OUTPUT_FILE ${archive} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${folder})
endforeach()
