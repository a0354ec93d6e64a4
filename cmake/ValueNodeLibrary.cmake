include("${CMAKE_CURRENT_LIST_DIR}/ValueHardening.cmake")

# value_add_node_library(<name> <source>... [ICONS <file>...])
#
# A node library that programs of the host load by file: <name>.so, linked with the node kit and the host's self-tests.
# Nothing is exported but what the sources export themselves, it can really be unloaded, and products and sums are not
# fused, so that results are the same on every processor. It is hardened as the host's own libraries are.
#
# ICONS are compiled in as resources of Qt, which must be installed: ":/<name>/<file name>". The record of the library
# has ":/<name>/" as its icon folder; a node with the icon "Add" has Add.png (48 pixels) and Add12.png.
function(value_add_node_library name)
  cmake_parse_arguments(arg "" "" "ICONS" ${ARGN})
  add_library(${name} MODULE ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ValueHost::NodeKit ValueHost::Testing)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(arg_ICONS)
    find_package(Qt6 REQUIRED COMPONENTS Core)
    set(files "")
    foreach(icon IN LISTS arg_ICONS)
      get_filename_component(alias "${icon}" NAME)
      get_filename_component(file "${icon}" ABSOLUTE)
      string(APPEND files "<file alias=\"${alias}\">${file}</file>")
    endforeach()
    set(list "${CMAKE_CURRENT_BINARY_DIR}/${name}Icons.qrc")
    file(CONFIGURE OUTPUT "${list}" @ONLY CONTENT "<RCC><qresource prefix=\"/${name}\">${files}</qresource></RCC>\n")
    set_target_properties(${name} PROPERTIES AUTORCC ON AUTORCC_OPTIONS "--format-version;3;--no-compress")
    target_sources(${name} PRIVATE "${list}")
    target_link_libraries(${name} PRIVATE Qt6::Core)
  endif()
  target_compile_options(${name} PRIVATE ${VALUE_HARDENING_COMPILE_OPTIONS})
  target_link_options(${name} PRIVATE ${VALUE_HARDENING_LINK_OPTIONS})
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${name} PRIVATE -ffp-contract=off)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PRIVATE -fno-gnu-unique)
  endif()
endfunction()
