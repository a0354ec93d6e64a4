include("${CMAKE_CURRENT_LIST_DIR}/ValueHardening.cmake")

# value_add_node_library(<name> <source>...)
#
# A node library that programs of the host load by file: <name>.so, linked with the host's libraries. Nothing is exported
# but what the sources export themselves, it can really be unloaded, and products and sums are not fused, so that results
# are the same on every processor. It is hardened as the host's own libraries are.
function(value_add_node_library name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE ValueHost::Tools)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${name} PRIVATE ${VALUE_HARDENING_COMPILE_OPTIONS})
  target_link_options(${name} PRIVATE ${VALUE_HARDENING_LINK_OPTIONS})
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${name} PRIVATE -ffp-contract=off)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PRIVATE -fno-gnu-unique)
  endif()
endfunction()
