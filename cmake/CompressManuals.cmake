# Policy wants man pages compressed, without a time so that the same input gives the same package.
file(GLOB_RECURSE manuals ${CPACK_TEMPORARY_DIRECTORY}/hwdef*.1)
foreach(manual IN LISTS manuals)
  execute_process(COMMAND gzip -9n ${manual} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
