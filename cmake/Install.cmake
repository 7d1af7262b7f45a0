# What `cmake --install` lays down, in the parts that become Debian packages: runtime, development and
# command. A second major version can be installed beside the first.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(HWDEF_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/hwdef-${PROJECT_VERSION_MAJOR})
set(HWDEF_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/hwdef)

install(TARGETS hwdef EXPORT hwdefTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  FILE_SET HEADERS DESTINATION ${HWDEF_INCLUDEDIR} COMPONENT development
  INCLUDES DESTINATION ${HWDEF_INCLUDEDIR})
install(EXPORT hwdefTargets NAMESPACE hwdef:: DESTINATION ${HWDEF_CMAKEDIR} COMPONENT development)

configure_package_config_file(cmake/hwdefConfig.cmake.in ${PROJECT_BINARY_DIR}/hwdefConfig.cmake
  INSTALL_DESTINATION ${HWDEF_CMAKEDIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/hwdefConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/hwdefConfig.cmake ${PROJECT_BINARY_DIR}/hwdefConfigVersion.cmake
  DESTINATION ${HWDEF_CMAKEDIR} COMPONENT development)

file(RELATIVE_PATH HWDEF_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)  # so that it may be moved
string(REGEX REPLACE "/$" "" HWDEF_PC_PREFIX "${HWDEF_PC_PREFIX}")
configure_file(cmake/hwdef.pc.in ${PROJECT_BINARY_DIR}/hwdef.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/hwdef.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET hwdef_command)
  # Outside the system's own directories the command looks for the library that came with it.
  if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_property(TARGET hwdef_command PROPERTY INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  endif()
  install(TARGETS hwdef_command RUNTIME COMPONENT command)
  install(DIRECTORY ${CMAKE_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT command FILES_MATCHING PATTERN "*.1")
  # The completions, where the shells look for them: zsh of Debian has one place for packages, and one below
  # /usr/local.
  set(zsh_place site-functions)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh_place vendor-completions)
  endif()
  install(FILES tools/completions/hwdef.bash RENAME hwdef
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT command)
  install(FILES tools/completions/_hwdef
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_place} COMPONENT command)
endif()
