# write_debian_changelog(<file> <changelog> <version of the package> <maintainer>)
#
# One entry per release of the changelog, newest first, each of which refers to the changelog itself. Changes that are
# not released yet belong to the package's own entry, which has the date of the build.
function(write_debian_changelog file changelog version maintainer)
  string(TIMESTAMP today "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(STRINGS "${changelog}" headings REGEX "^## \\[[0-9]")
  string(REGEX REPLACE "-[^-]*$" "" upstream "${version}")
  string(REGEX MATCH "-[^-]*$" revision "${version}")
  set(text "value (${version}) unstable; urgency=medium\n\n  * Packages of Value ${upstream}; see changelog.gz.\n\n")
  string(APPEND text " -- ${maintainer}  ${today}\n")
  foreach(heading IN LISTS headings)
    if(NOT heading MATCHES "^## \\[([0-9.]+)\\] - ([0-9]+)-([0-9]+)-([0-9]+)$" OR CMAKE_MATCH_1 STREQUAL upstream)
      continue()
    endif()
    set(release "${CMAKE_MATCH_1}")
    run_date("${CMAKE_MATCH_2}-${CMAKE_MATCH_3}-${CMAKE_MATCH_4}" date)
    string(APPEND text "\nvalue (${release}${revision}) unstable; urgency=medium\n\n"
      "  * Packages of Value ${release}; see changelog.gz.\n\n -- ${maintainer}  ${date}\n")
  endforeach()
  file(WRITE "${file}" "${text}")
endfunction()

# Midnight of a day, in the form of Debian's changelogs.
function(run_date day result)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C date --utc "--date=${day}" "+%a, %d %b %Y %H:%M:%S +0000"
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "${date}" PARENT_SCOPE)
endfunction()
