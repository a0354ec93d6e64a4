# Run by CPack when the packages are there. CPack gives a package of libraries scripts that call ldconfig, which is what
# its triggers file is for; they are taken out again.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE code ERROR_VARIABLE output OUTPUT_VARIABLE output)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${code}:\n${output}")
  endif()
endfunction()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder "${CPACK_TEMPORARY_DIRECTORY}/unpacked")
  file(REMOVE_RECURSE "${folder}")
  run(dpkg-deb --raw-extract "${package}" "${folder}")
  if(EXISTS "${folder}/DEBIAN/postinst" OR EXISTS "${folder}/DEBIAN/postrm")
    file(REMOVE "${folder}/DEBIAN/postinst" "${folder}/DEBIAN/postrm")
    run(dpkg-deb --root-owner-group -Zxz --build "${folder}" "${package}")
  endif()
  file(REMOVE_RECURSE "${folder}")
endforeach()
