# Installs the project, builds the example host against the installation alone, and runs it:
#
#   cmake -DBUILD_DIR=<build folder> -DSOURCE_DIR=<the project> -DWORK_DIR=<folder for everything> -P this
#
# The example adds 0.25 to the terrain. What it writes must be what the program's own "Value Add" writes.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${code}:\n${output}")
  endif()
  set(run_output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
# With the sanitizers, Qt stays in the process: a library behind it loses a few bytes when it is unloaded.
set(keep_qt)
if(FLAGS)
  set(keep_qt "-DCMAKE_EXE_LINKER_FLAGS=-Wl,--no-as-needed -lQt6Core")
endif()
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/Examples/HostProgram" -B "${WORK_DIR}/build" -G Ninja
  -DCMAKE_BUILD_TYPE=Release "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_FLAGS=${FLAGS}" ${keep_qt})
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")

set(program "${WORK_DIR}/build/host-program")
set(terrain "${SOURCE_DIR}/Examples/Images/terrain.exr")
run("${program}" "${prefix}/lib/value/Value.so" "${terrain}" "${WORK_DIR}/raised.exr")
if(NOT run_output STREQUAL "512 x 512, value, declared 0.25 to 1.25\n")
  message(FATAL_ERROR "the example host does not say what its page shows:\n${run_output}")
endif()

run("${prefix}/bin/value" apply "Value Add" -i "${terrain}" --set constant=0.25 -o "${WORK_DIR}/added.exr")
run("${prefix}/bin/value" apply "Value Subtract" -i "${WORK_DIR}/raised.exr" -i "${WORK_DIR}/added.exr"
  -o "${WORK_DIR}/difference.exr")
run("${prefix}/bin/value" stats "${WORK_DIR}/difference.exr" --json)
string(JSON low GET "${run_output}" measured 0)
string(JSON high GET "${run_output}" measured 1)
if(NOT low EQUAL 0 OR NOT high EQUAL 0)
  message(FATAL_ERROR "the example host and \"value apply\" write samples that differ by ${low} to ${high}")
endif()

# A library that is not there is one line, and no crash.
execute_process(COMMAND "${program}" "${WORK_DIR}/none.so" "${terrain}" "${WORK_DIR}/none.exr"
  RESULT_VARIABLE code ERROR_VARIABLE output)
if(NOT code EQUAL 1 OR NOT output MATCHES "^host-program: [^\n]*none\\.so[^\n]*\n$" OR EXISTS "${WORK_DIR}/none.exr")
  message(FATAL_ERROR "without a library the example host ends with ${code} and says:\n${output}")
endif()

# The manual and the completions of the shells lie where man and the shells look for them.
run(bash "${CMAKE_CURRENT_LIST_DIR}/ShellsTest.sh" "${prefix}")
