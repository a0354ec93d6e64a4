# Plants includes in a small tree and expects cmake/CheckLayers.cmake to refuse those that are against the direction of
# the modules, and no others:
#
#   cmake -DCHECK=<CheckLayers.cmake> -DWORK_DIR=<folder for everything> -P this

# Checks a tree in which `file` includes ARGN; `expected` must be in what is said, or nothing may be said.
function(expect expected file)
  file(REMOVE_RECURSE "${WORK_DIR}")
  file(WRITE "${WORK_DIR}/Host/Math/Include/Host/Math/Box.h" "#pragma once\n")
  file(WRITE "${WORK_DIR}/Host/Math/Rounding.h" "#pragma once\n")
  file(WRITE "${WORK_DIR}/Host/Tools/Include/Host/Tools/Node.h" "#pragma once\n")
  file(WRITE "${WORK_DIR}/Host/Widgets/Include/Host/Widgets/Panel.h" "#pragma once\n")
  file(WRITE "${WORK_DIR}/Tests/HostTests.cmake" "NodeTest.cpp")
  set(text "")
  foreach(header IN LISTS ARGN)
    string(APPEND text "#include ${header}\n")
  endforeach()
  file(WRITE "${WORK_DIR}/${file}" "${text}")
  execute_process(COMMAND "${CMAKE_COMMAND}" "-DROOT=${WORK_DIR}" -P "${CHECK}"
    RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  string(FIND "${output}" "${expected}" place)
  if(expected STREQUAL "" AND (NOT code EQUAL 0 OR NOT output STREQUAL ""))
    message(SEND_ERROR "${file} may include ${ARGN}, and the check says:\n${output}")
  elseif(NOT expected STREQUAL "" AND (code EQUAL 0 OR place EQUAL -1))
    message(SEND_ERROR "${file} with ${ARGN}: the check ends with ${code} and without \"${expected}\":\n${output}")
  endif()
endfunction()

set(wrong "which is against the direction of the modules")
expect("" Host/Tools/Node.cpp "\"Host/Tools/Node.h\"" "\"Host/Math/Box.h\"" "\"Host/Math/Api.h\"" "<vector>")
expect("Host/Math/Box.cpp includes Host/Tools/Node.h, ${wrong}" Host/Math/Box.cpp "\"Host/Tools/Node.h\"")
expect("Host/Tools/Node.cpp includes Host/Math/Rounding.h, ${wrong}" Host/Tools/Node.cpp "\"Host/Math/Rounding.h\"")
expect("Host/Tools/Node.cpp includes Tests/Support/Images.h, ${wrong}" Host/Tools/Node.cpp "\"Tests/Support/Images.h\"")
expect("" Host/Tools/NodeTest.cpp "\"Tests/Support/Images.h\"" "\"Host/Widgets/Panel.h\"")
expect("Host/Tools/NodeTest.cpp includes Value/Steps.h, ${wrong}" Host/Tools/NodeTest.cpp "\"Value/Steps.h\"")
expect("Host/Files/Codecs/Png.cpp includes Host/Tools/Node.h, ${wrong}" Host/Files/Codecs/Png.cpp "\"Host/Tools/Node.h\"")
expect("Apps/ContactSheet/Main.cpp includes Apps/Panel/Panel.h, ${wrong}" Apps/ContactSheet/Main.cpp
  "\"Apps/Panel/Panel.h\"")
expect("" Apps/Value/Main.cpp "\"Apps/Panel/Panel.h\"" "<Host/Tools/Node.h>")
expect("Apps/Value/Main.cpp includes Apps/Panel/Preview.h, ${wrong}" Apps/Value/Main.cpp "\"Apps/Panel/Preview.h\"")
expect("Tests/Libraries/Odd.cpp includes Value/Steps.h, ${wrong}" Tests/Libraries/Odd.cpp "\"Value/Steps.h\"")
expect("Value/Steps.cpp includes \"Steps.h\"; headers of this project are named by their path" Value/Steps.cpp
  "\"Steps.h\"")
expect("has no row for Host/Sound" Host/Sound/Wave.cpp "<vector>")
expect("Host/Tools/EngineTest.cpp is in no test program" Host/Tools/EngineTest.cpp "<vector>")
expect("" Value/Nodes/Clamp/ClampTest.cpp "<vector>")
file(REMOVE_RECURSE "${WORK_DIR}")
