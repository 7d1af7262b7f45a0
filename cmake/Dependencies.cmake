# Every library that hwdef stands on; all are Debian packages.
find_package(Boost 1.74 REQUIRED COMPONENTS filesystem iostreams)
find_package(pugixml REQUIRED)
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)

find_path(ISAL_INCLUDE_DIR isa-l/igzip_lib.h REQUIRED)
find_library(ISAL_LIBRARY isal REQUIRED)
add_library(hwdef_isal INTERFACE)
target_include_directories(hwdef_isal SYSTEM INTERFACE ${ISAL_INCLUDE_DIR})
target_link_libraries(hwdef_isal INTERFACE ${ISAL_LIBRARY})

find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
