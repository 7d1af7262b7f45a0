# Three Debian packages: the library, what building against it needs, and the command.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME hwdef)
set(CPACK_PACKAGE_VENDOR "the hwdef developers")
# Policy wants an address that could be one; names below .example are nobody's, until the project has its own.
set(HWDEF_PACKAGE_CONTACT "the hwdef developers <hwdef@hwdef.example>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_CONTACT ${HWDEF_PACKAGE_CONTACT})
# CPack's own default, which it doesn't put in front of what each package says of itself.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/CompressManuals.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(description "
A hardware definition container is a zip archive that hands one
programmable-logic design from the implementation tools to the software
tools after them. It holds an XML bill of materials and the files it lists.

This package holds")
set(library libhwdef${PROJECT_VERSION_MAJOR})
set(exactly "${library} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "library for hardware definition containers${description} the shared library.")
set(control ${PROJECT_BINARY_DIR}/debian)
configure_file(packaging/${library}.symbols ${control}/symbols COPYONLY)
file(WRITE ${control}/shlibs "libhwdef ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION})\n")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/symbols ${control}/shlibs ${control}/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libhwdef-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${exactly}, libboost-dev (>= 1.74), rapidjson-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "library for hardware definition containers - development files${description} the headers, and what CMake and
pkg-config need.")

if(TARGET hwdef_command)
  list(APPEND CPACK_COMPONENTS_ALL command)
  set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME hwdef)
  set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${exactly}")
  set(CPACK_DEBIAN_COMMAND_DESCRIPTION
    "command for hardware definition containers${description} the command that builds, shows and changes
them.")
endif()

# What policy asks of every package: its licence and its history.
find_program(HWDEF_GZIP gzip REQUIRED)
set(history ${control}/changelog.Debian)
configure_file(packaging/changelog.Debian.in ${history} @ONLY)
execute_process(COMMAND ${HWDEF_GZIP} -9nkf ${history} COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES packaging/copyright ${history}.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
