# Installs the project, builds the example library against the installation alone, and uses both:
#
#   cmake -DBUILD_DIR=<build folder> -DEXAMPLE_DIR=<Examples/HelloNode> -DWORK_DIR=<folder for everything>
#     [-DHARDENING=<command that reads the files of a folder>] [-DPYTHON=<interpreter, where the package is built>] -P this
#
# Everything is checked by results: the sample that the example's node computes is worked out by hand.

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
run("${CMAKE_COMMAND}" -S "${EXAMPLE_DIR}" -B "${WORK_DIR}/hello" -G Ninja -DCMAKE_BUILD_TYPE=Release
  "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_FLAGS=${FLAGS}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/hello")

# The installed program finds its own library unasked.
run("${prefix}/bin/value" nodes)
if(NOT run_output MATCHES "ImageValueAddNode")
  message(FATAL_ERROR "the installed program does not list its own nodes:\n${run_output}")
endif()

# It finds what it loads and starts where the linker knows the folder of the libraries by a link, too, as Debian's does.
file(CREATE_LINK "${prefix}/lib" "${WORK_DIR}/linked" SYMBOLIC)
run("${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${WORK_DIR}/linked" "${prefix}/bin/value" doctor)
string(FIND "${run_output}" "there is no" place)
if(NOT place EQUAL -1)
  message(FATAL_ERROR "with a link to its libraries the installed program does not find all of its parts:\n${run_output}")
endif()

# Its panel does, whose modules lie among the installed libraries.
run("${prefix}/bin/value" panel "Value Clamp" --screenshot "${WORK_DIR}/panel.png")
if(NOT EXISTS "${WORK_DIR}/panel.png")
  message(FATAL_ERROR "the installed program does not draw its panel")
endif()

# So does its Python package, which finds the host, the nodes and what decodes files.
if(PYTHON)
  file(GLOB_RECURSE package "${prefix}/__init__.py")
  cmake_path(GET package PARENT_PATH package)
  cmake_path(GET package PARENT_PATH package)
  file(WRITE "${WORK_DIR}/package.py" [=[
import sys
import numpy as np
import valuenodes as vn

assert vn.__file__.startswith(sys.argv[1]), vn.__file__
assert np.asarray(vn.add(np.zeros((2, 3), np.float32), 0.5)).tolist() == [[0.5] * 3] * 2
vn.write(sys.argv[1] + "/image.exr", np.ones((2, 3), np.float32))
assert vn.read(sys.argv[1] + "/image.exr").size == (3, 2)
problems = [codec["problem"] for codec in vn.doctor()["codecs"] if codec["problem"]]
assert not problems, problems
]=])
  run("${CMAKE_COMMAND}" -E env "PYTHONPATH=${package}" "${PYTHON}" "${WORK_DIR}/package.py" "${prefix}")
endif()

set(library "${WORK_DIR}/hello/HelloNode.so")
run("${prefix}/bin/value" nodes --no-default-plugins --plugin "${library}")
if(NOT run_output MATCHES "HelloContrastNode" OR run_output MATCHES "ImageValueAddNode")
  message(FATAL_ERROR "--no-default-plugins does not load the example's library alone:\n${run_output}")
endif()

# A library of others is hardened as the host's own are.
if(HARDENING)
  run(${HARDENING} --guarded HelloNode.so "${WORK_DIR}/hello")
endif()

run("${prefix}/bin/value" validate "${library}")
if(NOT run_output MATCHES " 0 failed, 0 skipped\n$")
  message(FATAL_ERROR "the example's library does not pass every check:\n${run_output}")
endif()

# What the host shows of it comes from its record and rows; its panel and its self-test work like those of any node.
run("${prefix}/bin/value" nodes "Hello Contrast" --plugin "${library}")
foreach(part "Pushes values away from a middle." "How far values move from the middle.")
  string(FIND "${run_output}" "${part}" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "the example's node is listed without \"${part}\":\n${run_output}")
  endif()
endforeach()
run("${prefix}/bin/value" panel "Hello Contrast" --plugin "${library}" --screenshot "${WORK_DIR}/hello.png")
file(MAKE_DIRECTORY "${WORK_DIR}/selftest")
execute_process(COMMAND "${prefix}/bin/value" selftest "Hello Contrast" --plugin "${library}"
  WORKING_DIRECTORY "${WORK_DIR}/selftest" RESULT_VARIABLE code OUTPUT_VARIABLE run_output)
if(NOT code EQUAL 0 OR NOT EXISTS "${WORK_DIR}/selftest/output/nodes/hello/hellocontrastnode/waves.exr")
  message(FATAL_ERROR "the example's self-test does not render its case:\n${run_output}")
endif()

# The shortest library stays short.
file(READ "${EXAMPLE_DIR}/HelloNode.cpp" source)
string(REGEX REPLACE "[^\n]" "" line_ends "${source}")
string(LENGTH "${line_ends}" length)
if(length GREATER 60)
  message(FATAL_ERROR "HelloNode.cpp has ${length} lines, more than 60")
endif()

# (0.75 - 0.5) * 3 + 0.5 = 1.25 exactly.
run("${prefix}/bin/value" apply ImageRectangleNode --set frame=0,0,3,2 --set color=0.75,0.75,0.75,1
  -o "${WORK_DIR}/grey.exr")
run("${prefix}/bin/value" apply "Hello Contrast" --plugin "${library}" -i "${WORK_DIR}/grey.exr" --set contrast=3
  -o "${WORK_DIR}/contrast.exr")
run("${prefix}/bin/value" stats "${WORK_DIR}/contrast.exr" --json)
string(JSON low GET "${run_output}" measured 0)
string(JSON opacity_and_high GET "${run_output}" measured 1)
if(NOT low EQUAL 1.25 OR NOT opacity_and_high EQUAL 2)
  message(FATAL_ERROR "Hello Contrast gives ${low} and ${opacity_and_high}, not 1.25 (colour) and 2 (opacity)")
endif()
