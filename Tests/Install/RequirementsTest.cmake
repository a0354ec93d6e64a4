# Configures the project where a package is missing or too old, and expects the line that says what it is needed for:
#
#   cmake -DSOURCE_DIR=<the project> -DWORK_DIR=<folder for everything> -P this

# Configuring with the options ARGN must fail with `text`, however its lines are wrapped.
function(expect_failure text)
  file(REMOVE_RECURSE "${WORK_DIR}/build")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja ${ARGN}
    RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  string(FIND "${output}" "${text}" place)
  if(code EQUAL 0 OR place EQUAL -1)
    message(FATAL_ERROR "configured with ${ARGN}, CMake ended with ${code} and without \"${text}\":\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
expect_failure("CLI11 2.1 is needed for the command line, and was not found (Debian package libcli11-dev;"
  -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON)

set(old "${WORK_DIR}/old")
file(WRITE "${old}/spdlogConfig.cmake" "set(spdlog_FOUND TRUE)\n")
file(WRITE "${old}/spdlogConfigVersion.cmake" "set(PACKAGE_VERSION 1.9.2)\n")
expect_failure("spdlog 1.10 or later is needed for the log, and spdlog 1.9.2 was found in ${old} (Debian package libspdlog-dev)"
  "-Dspdlog_DIR=${old}")

expect_failure("benchmark 1.7 is needed for the benchmark program; -DVALUE_BUILD_BENCH=OFF leaves it out, and was not found"
  -DVALUE_BUILD_TESTS=OFF -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON)
