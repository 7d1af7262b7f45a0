# What a caller may include, and all that is installed: the headers that declare something exported,
# and those that gather them. No header of hwdef/ leads to one of another library.
file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/hwdef/*.h ${PROJECT_SOURCE_DIR}/platform/*.h)
set(HWDEF_PUBLIC_HEADERS ${PROJECT_SOURCE_DIR}/hwdef/hwdef.h ${PROJECT_SOURCE_DIR}/platform/platform.h)
foreach(header IN LISTS headers)
  file(STRINGS ${header} exported REGEX "HWDEF_API" LIMIT_COUNT 1)
  if(exported)
    list(APPEND HWDEF_PUBLIC_HEADERS ${header})
  endif()
endforeach()
# Plain data that is gathered there has nothing to export.
foreach(gathering hwdef/hwdef.h platform/platform.h)
  file(STRINGS ${PROJECT_SOURCE_DIR}/${gathering} includes REGEX "^#include \"")
  foreach(include IN LISTS includes)
    string(REGEX REPLACE "^#include \"(.*)\"$" "${PROJECT_SOURCE_DIR}/\\1" header "${include}")
    list(APPEND HWDEF_PUBLIC_HEADERS ${header})
  endforeach()
endforeach()
list(REMOVE_DUPLICATES HWDEF_PUBLIC_HEADERS)
