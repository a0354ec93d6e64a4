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
foreach(page value value-run value-apply)
  if(NOT EXISTS "${prefix}/share/man/man1/${page}.1")
    message(FATAL_ERROR "the installation has no page ${page}.1")
  endif()
endforeach()
run("${CMAKE_COMMAND}" -E env "MANPATH=${prefix}/share/man" MANPAGER=cat man value-run)
if(NOT run_output MATCHES "evaluates a graph document")
  message(FATAL_ERROR "man does not find the installed page:\n${run_output}")
endif()
set(ask "set -- value sel; COMP_WORDS=(value sel) COMP_CWORD=1 _value value sel value; echo \"\${COMPREPLY[*]}\"")
run("${CMAKE_COMMAND}" -E env "PATH=${prefix}/bin:$ENV{PATH}" "XDG_DATA_DIRS=${prefix}/share" bash --norc -c
  "source /usr/share/bash-completion/bash_completion; _completion_loader value; ${ask}")
if(NOT run_output STREQUAL "selftest\n")
  message(FATAL_ERROR "bash completes \"value sel\" as:\n${run_output}")
endif()
run("${CMAKE_COMMAND}" -E env "PATH=${prefix}/bin:$ENV{PATH}" zsh -f -c
  "fpath=(${prefix}/share/zsh/site-functions $fpath); autoload -U compinit; compinit -u -D; print -r -- $_comps[value]")
if(NOT run_output STREQUAL "_value\n")
  message(FATAL_ERROR "zsh does not find the completions of value:\n${run_output}")
endif()
run("${CMAKE_COMMAND}" -E env "PATH=${prefix}/bin:$ENV{PATH}" "XDG_DATA_DIRS=${prefix}/share" fish --no-config -c
  "set -p fish_complete_path ${prefix}/share/fish/vendor_completions.d; complete -C 'value sel'")
if(NOT run_output MATCHES "^selftest\t")
  message(FATAL_ERROR "fish completes \"value sel\" as:\n${run_output}")
endif()
