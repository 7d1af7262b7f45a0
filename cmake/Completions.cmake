# The completions, under the names by which the shells look for them.
set(completions ${PROJECT_SOURCE_DIR}/tools/completions)
if(EXISTS ${completions}/hwdef.bash)
  install(FILES ${completions}/hwdef.bash RENAME hwdef
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT command)
endif()
if(EXISTS ${completions}/_hwdef)
  install(FILES ${completions}/_hwdef
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT command)
endif()
