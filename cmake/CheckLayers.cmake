# Holds every #include of the sources against the one allowed direction of dependency:
#
#   cmake -P cmake/CheckLayers.cmake
#
# A module may include headers of itself and of the modules listed for it. The node library knows the host's public
# headers up to Tools and Testing; nothing but the library's own tests and the benchmarks includes anything of the
# library. Files named *Reference.h hold definitions that are slow and plain: tests alone include them.
cmake_minimum_required(VERSION 3.25)
get_filename_component(root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

set(Math_may)
set(Util_may Math)
set(Image_may Math Util)
set(Gpu_may Math Util Image)
set(Tools_may Math Util Image)
set(Widgets_may Math Util Image Tools)
set(NodeKit_may Math Util Image Tools Widgets)
set(Files_may Math Util Image)
set(Nodes_may Math Util Image Tools NodeKit Files)
set(Documents_may Math Util Image Tools Files)
set(Testing_may Math Util Image Tools Files)
set(Validation_may Math Util Image Tools Nodes)
set(Value_may Math Util Image Gpu Tools NodeKit Testing)

# Every include of a project header in `file` must be of `own` or of a host module in ARGN.
function(check_file file own)
  file(STRINGS "${root}/${file}" lines REGEX "^#include [<\"](Host|Value|Apps)/")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^#include [<\"]([^>\"]+)[>\"].*" "\\1" header "${line}")
    if(header MATCHES "^${own}/")
      continue()
    endif()
    set(allowed NO)
    foreach(module IN LISTS ARGN)
      # Only what is public: private headers are not under Include.
      if(header MATCHES "^Host/${module}/" AND
         (EXISTS "${root}/Host/${module}/Include/${header}" OR header MATCHES "/Api.h$"))
        set(allowed YES)
      endif()
    endforeach()
    if(NOT allowed)
      message(SEND_ERROR "${file} includes ${header}, which is against the direction of the modules")
    endif()
  endforeach()
endfunction()

foreach(module Math Util Image Gpu Tools Widgets NodeKit Files Nodes Documents Testing Validation)
  file(GLOB_RECURSE files RELATIVE "${root}" "${root}/Host/${module}/*.h" "${root}/Host/${module}/*.cpp")
  foreach(file IN LISTS files)
    if(NOT file MATCHES "Test\\.cpp$")
      check_file("${file}" "Host/${module}" ${${module}_may})
    endif()
  endforeach()
endforeach()
file(GLOB_RECURSE files RELATIVE "${root}" "${root}/Value/*.h" "${root}/Value/*.cpp")
foreach(file IN LISTS files)
  if(NOT file MATCHES "Test\\.cpp$")
    check_file("${file}" "Value" ${Value_may})
    file(STRINGS "${root}/${file}" references REGEX "^#include .*Reference\\.h")
    if(references AND NOT file MATCHES "Reference\\.h$")
      message(SEND_ERROR "${file} includes what only tests may: ${references}")
    endif()
  endif()
endforeach()
file(GLOB_RECURSE files RELATIVE "${root}" "${root}/Apps/*.h" "${root}/Apps/*.cpp")
foreach(file IN LISTS files)
  check_file("${file}" "Apps" Math Util Image Gpu Tools Widgets NodeKit Files Nodes Documents Testing Validation)
endforeach()
