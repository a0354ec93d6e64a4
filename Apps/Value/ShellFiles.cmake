# The pages of the manual, written by the program itself, and the completion scripts of the shells.

set(manual_folder "${PROJECT_BINARY_DIR}/man/man1")
set(manual_stamp "${PROJECT_BINARY_DIR}/man/written")
# The pages tell of the program's own library alone, whatever the environment of the build names.
set(manual_environment "--unset=VALUE_PLUGIN_PATH")
if(VALUE_SANITIZE)
  list(APPEND manual_environment "ASAN_OPTIONS=detect_leaks=0")
endif()
add_custom_command(OUTPUT "${manual_stamp}"
  COMMAND "${CMAKE_COMMAND}" -E rm -rf "${manual_folder}"
  COMMAND "${CMAKE_COMMAND}" -E env ${manual_environment}
    "$<TARGET_FILE:ValueProgram>" manual --output-dir "${manual_folder}"
  COMMAND "${CMAKE_COMMAND}" -E touch "${manual_stamp}"
  DEPENDS ValueProgram Value
  COMMENT "Writing the pages of the manual"
  VERBATIM)
add_custom_target(ValueManual ALL DEPENDS "${manual_stamp}")

install(DIRECTORY "${manual_folder}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES Shells/value.bash DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME value)
# Of the standard folders of zsh, the one for what is installed under /usr/local; a package of a distribution has
# another one, such as share/zsh/vendor-completions.
set(VALUE_ZSH_COMPLETIONS "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
  "Where the completions of zsh are installed")
install(FILES Shells/_value DESTINATION "${VALUE_ZSH_COMPLETIONS}")
install(FILES Shells/value.fish DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
