# The library: its sources are compiled once, into objects that the shared library and, for
# tests that look at internal classes, a static archive are both made of.
file(GLOB_RECURSE HWDEF_SOURCES CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/hwdef/*.cpp ${PROJECT_SOURCE_DIR}/platform/*.cpp)

add_library(hwdef_objects OBJECT ${HWDEF_SOURCES})
target_include_directories(hwdef_objects PUBLIC ${PROJECT_SOURCE_DIR})
target_include_directories(hwdef_objects SYSTEM PUBLIC ${RAPIDJSON_INCLUDE_DIR})
target_compile_definitions(hwdef_objects PRIVATE
  HWDEF_BUILDING HWDEF_VERSION="${PROJECT_VERSION}")
target_link_libraries(hwdef_objects
  PUBLIC Boost::headers
  PRIVATE hwdef_options Boost::filesystem Boost::iostreams pugixml::pugixml OpenSSL::Crypto hwdef_isal)
# No precompiled headers here, nor for the command: they lie in the build directory, and a compiler cache could not tell
# that the builds of tests and packages compile the same.

set(HWDEF_LINKED Boost::filesystem Boost::iostreams pugixml::pugixml OpenSSL::Crypto hwdef_isal)

add_library(hwdef SHARED)
add_library(hwdef::hwdef ALIAS hwdef)
set_target_properties(hwdef PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
include(cmake/PublicHeaders.cmake)
target_sources(hwdef PUBLIC
  FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${HWDEF_PUBLIC_HEADERS})
# What the public headers need: g++ takes it for granted, clang 14 doesn't.
target_compile_features(hwdef INTERFACE cxx_std_17)
target_link_libraries(hwdef
  PUBLIC Boost::headers
  PRIVATE hwdef_objects hwdef_options ${HWDEF_LINKED})

# Visibility hides our own classes; the export list also hides the templates of std and Boost that the
# compiler instantiates with them.
set(HWDEF_EXPORT_LIST ${PROJECT_SOURCE_DIR}/cmake/hwdef.map)
target_link_options(hwdef PRIVATE LINKER:--version-script=${HWDEF_EXPORT_LIST})
set_property(TARGET hwdef APPEND PROPERTY LINK_DEPENDS ${HWDEF_EXPORT_LIST})

add_library(hwdef_static STATIC EXCLUDE_FROM_ALL)
target_compile_definitions(hwdef_static PUBLIC HWDEF_STATIC)
target_link_libraries(hwdef_static PUBLIC hwdef_objects hwdef_options ${HWDEF_LINKED})
