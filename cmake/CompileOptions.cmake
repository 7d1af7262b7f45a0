# How every target of the project is compiled, carried by one interface target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(HWDEF_CCACHE ccache)
if(HWDEF_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without these it doesn't keep what was compiled with a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros ${HWDEF_CCACHE})
endif()

# For what runs on the library and takes no time of its own: to optimise it as well would take half of a build. So
# optimised, g++ 12 thinks that std::string might resize itself beyond all memory, and tells so of a header that is
# compiled beforehand. Holds for the targets of the calling directory and those below.
macro(hwdef_optimise_less)
  string(REPLACE "-O3" "-O1" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-stringop-overflow -Wno-array-bounds)
  endif()
endmacro()

add_library(hwdef_options INTERFACE)
target_compile_options(hwdef_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion
  $<$<BOOL:${HWDEF_WERROR}>:-Werror>)
# g++ 12 sees overlapping copies where a text literal is put in front of a std::string (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(hwdef_options INTERFACE -Wno-restrict)
endif()
if(HWDEF_SANITIZE)
  target_compile_options(hwdef_options INTERFACE
    -fsanitize=${HWDEF_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(hwdef_options INTERFACE -fsanitize=${HWDEF_SANITIZE})
endif()
# The library tells the fuzzer which of its code an input reaches.
if(HWDEF_FUZZ)
  target_compile_options(hwdef_options INTERFACE -fsanitize=fuzzer-no-link
    -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/tests/fuzz/ignored-findings.txt)
endif()
if(HWDEF_COVERAGE)
  target_compile_options(hwdef_options INTERFACE --coverage)
  target_link_options(hwdef_options INTERFACE --coverage)
endif()
