# Checks every #include of the sources against the one allowed direction of dependency,
#
#   cmake [-DROOT=<folder>] -P cmake/CheckLayers.cmake
#
# and that every file of tests is in a test program.
#
# A folder may include its own headers and those that the tables below list for it. A word without a slash is a module of
# the host, whose public headers are meant; a path is everything below that folder, or one header. A folder that has no
# row is an error, and so is a header of this project that is not named by its path from the root. Files named
# *Reference.h hold definitions that are slow and plain: tests alone include them.
cmake_minimum_required(VERSION 3.25)
if(NOT ROOT)
  get_filename_component(ROOT "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
endif()

# The host's modules. NodeKit and the node library know the headers of the widgets, and load them at run time.
set(Host/Math "")
set(Host/Util Math)
set(Host/Image Math Util)
set(Host/Gpu Math Util Image)
set(Host/Tools Math Util Image)
set(Host/Viewing Math Util Image)
set(Host/Widgets Math Util Image Viewing Tools)
set(Host/NodeKit Math Util Image Tools Widgets)
set(Host/Files Math Util Image)
set(Host/Nodes Math Util Image Tools NodeKit Files)
set(Host/Documents Math Util Image Tools Files)
set(Host/Editing Math Util Image Viewing Tools Files Documents)
set(Host/Testing Math Util Image Tools Files)
set(Host/Validation Math Util Image Tools Files Nodes)
# Modules that the one around them loads at run time.
set(Host/Files/Codecs Math Util Image Files Host/Files/FileErrors.h)
set(Host/Validation/Resources "")

set(Value Math Util Image Gpu Tools Widgets NodeKit Testing)

set(Apps/ContactSheet Math Util Image Files)
set(Apps/NodePages Math Util Image Tools NodeKit Files Nodes Documents)
set(Apps/Desktop Math Util Image Files Tools)
set(Apps/Editor Math Util Image Viewing Tools Widgets Files Nodes Documents Editing Apps/Desktop)
set(Apps/Panel Math Util Image Viewing Tools Widgets Files Nodes Documents Apps/Desktop)
set(Apps/Value Math Util Image Gpu Tools NodeKit Files Nodes Documents Testing Validation Apps/Panel/Panel.h Apps/Editor/Editor.h)

set(Python Math Util Image Viewing Gpu Tools Files Nodes Documents Validation)

# Tests may look into what they test, and at every public header of the host.
set(every_module Math Util Image Viewing Gpu Tools Widgets NodeKit Files Nodes Documents Editing Testing Validation)
set(Tests/Abi ${every_module} Tests/Support Value/ValueLibraryInterface.h)
set(Tests/Contract ${every_module} Tests/Support Tests/Widgets Value)
set(Tests/Libraries ${every_module})
set(Tests/Proofs ${every_module} Value)
set(Tests/Support ${every_module} Value)
set(Tests/Widgets ${every_module} Tests/Support)
# Of the folders above, what their tests (...Test.cpp, ...Testing.h) may include beyond the folder itself.
set(tests_of_Host ${every_module} Tests/Support Tests/Widgets)
set(tests_of_Apps ${every_module} Tests/Support Tests/Widgets)
set(tests_of_Value ${every_module} Tests/Proofs Tests/Support Tests/Widgets)

set(Bench ${every_module} Value Host/Nodes/Terrain.h)
# Examples stand for projects of others.
set(Examples ${every_module})

# Sets `result` to whether `header` is among what ARGN lists.
function(is_listed header result)
  set(${result} NO PARENT_SCOPE)
  foreach(entry IN LISTS ARGN)
    if(entry MATCHES "/|^(Value|Python|Bench|Examples)$")
      if(header STREQUAL entry OR header MATCHES "^${entry}/")
        set(${result} YES PARENT_SCOPE)
      endif()
    # Private headers are not under Include, and Api.h is written by the build.
    elseif(header MATCHES "^Host/${entry}/" AND
           (EXISTS "${ROOT}/Host/${entry}/Include/${header}" OR header MATCHES "^Host/${entry}/Api\\.h$"))
      set(${result} YES PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

# Checks every include in the sources below `folder`, but for those in the folders that ARGN names.
function(check_folder folder)
  if(NOT DEFINED ${folder})
    message(SEND_ERROR "cmake/CheckLayers.cmake has no row for ${folder}")
    return()
  endif()
  string(REGEX REPLACE "/.*" "" top "${folder}")
  file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp" "${ROOT}/${folder}/*.in")
  foreach(file IN LISTS files)
    set(is_elsewhere NO)
    foreach(inner IN LISTS ARGN)
      if(file MATCHES "^${inner}/")
        set(is_elsewhere YES)
      endif()
    endforeach()
    if(is_elsewhere)
      continue()
    endif()
    set(may ${${folder}})
    if(file MATCHES "Test(\\.cpp|ing\\.h)$" AND DEFINED tests_of_${top})
      list(APPEND may ${tests_of_${top}})
    endif()
    file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*([<\"])([^>\"]+)[>\"].*" "\\1;\\2" parts "${line}")
      list(GET parts 0 quote)
      list(GET parts 1 header)
      if(header MATCHES "Reference\\.h$" AND NOT file MATCHES "(Test\\.cpp|Reference\\.h)$" AND NOT file MATCHES "^Tests/")
        message(SEND_ERROR "${file} includes ${header}, which is for tests")
      endif()
      if(header MATCHES "^(Host|Value|Apps|Python|Tests|Bench|Examples)/")
        is_listed("${header}" is_allowed ${folder} ${may})
        if(NOT is_allowed)
          message(SEND_ERROR "${file} includes ${header}, which is against the direction of the modules")
        endif()
      elseif(quote STREQUAL "\"")
        message(SEND_ERROR "${file} includes \"${header}\"; headers of this project are named by their path from its root")
      endif()
    endforeach()
  endforeach()
endfunction()

set(inner_modules Host/Files/Codecs Host/Validation/Resources)
foreach(top Host Apps Tests)
  file(GLOB children RELATIVE "${ROOT}" "${ROOT}/${top}/*")
  foreach(folder IN LISTS children)
    # Folders of tests in Python hold no sources.
    file(GLOB_RECURSE sources "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    if(IS_DIRECTORY "${ROOT}/${folder}" AND sources)
      check_folder("${folder}" ${inner_modules})
    endif()
  endforeach()
endforeach()
foreach(folder Value Python Bench Examples ${inner_modules})
  check_folder("${folder}")
endforeach()

# A test that no program has is never run. Those of the nodes are found by their folders.
set(lists "")
file(GLOB_RECURSE list_files "${ROOT}/Tests/*.cmake" "${ROOT}/Tests/CMakeLists.txt")
foreach(list_file IN LISTS list_files)
  file(READ "${list_file}" text)
  string(APPEND lists "${text}")
endforeach()
foreach(top Host Value Apps Tests)
  file(GLOB_RECURSE tests RELATIVE "${ROOT}" "${ROOT}/${top}/*Test.cpp")
  foreach(test IN LISTS tests)
    if(test MATCHES "^Value/Nodes/")
      continue()
    endif()
    get_filename_component(name "${test}" NAME)
    string(FIND "${lists}" "${name}" place)
    if(place EQUAL -1)
      message(SEND_ERROR "${test} is in no test program; Tests/HostTests.cmake and Tests/CMakeLists.txt list them")
    endif()
  endforeach()
endforeach()
