# What all targets of this project share: language level, floating point rules, warnings, places of build products.

include(GenerateExportHeader)
include(ValueHardening)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Programs and the node library side by side, the host's libraries where programs find them.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# Where an installation has what the host and its programs load at run time.
set(VALUE_MODULE_DIR "${CMAKE_INSTALL_LIBDIR}/value")

# Below 1.0 a minor version may break interfaces, so that it belongs to the name under which a library is asked for.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(VALUE_LIBRARY_VERSION "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
else()
  set(VALUE_LIBRARY_VERSION "${PROJECT_VERSION_MAJOR}")
endif()

find_program(VALUE_CCACHE ccache)
if(VALUE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without these allowances it keeps nothing of sources with precompiled headers.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${VALUE_CCACHE}")
endif()

add_library(ValueBuild INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(ValueBuild INTERFACE
    -Wall -Wextra -Wconversion -Wshadow
    # A product and a sum that are fused into one operation round once instead of twice: other results.
    -ffp-contract=off
    # Nobody reads errno or floating point exceptions; the results are the same.
    -fno-math-errno -fno-trapping-math)
  target_compile_options(ValueBuild INTERFACE ${VALUE_HARDENING_COMPILE_OPTIONS})
  target_link_options(ValueBuild INTERFACE ${VALUE_HARDENING_LINK_OPTIONS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Reported wrongly for sums of std::string (GCC bug 105651).
    target_compile_options(ValueBuild INTERFACE -Wno-restrict)
  endif()
  if(VALUE_WARNINGS_AS_ERRORS)
    target_compile_options(ValueBuild INTERFACE -Werror)
  endif()
  if(VALUE_SANITIZE)
    target_compile_options(ValueBuild INTERFACE -fsanitize=${VALUE_SANITIZE} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    target_link_options(ValueBuild INTERFACE -fsanitize=${VALUE_SANITIZE})
  endif()
endif()

# value_add_host_library(<Module> SOURCES <file>... [DEPENDS <target>...] [PRIVATE_DEPENDS <target>...])
#
# A shared library of the host, `Host<Module>`, whose public headers are under Include/Host/<Module>.
function(value_add_host_library module)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  set(target Host${module})
  string(TOUPPER ${module} upper)
  add_library(${target} SHARED ${arg_SOURCES})
  add_library(ValueHost::${module} ALIAS ${target})
  generate_export_header(${target}
    BASE_NAME HOST_${upper}
    EXPORT_MACRO_NAME HOST_${upper}_API
    EXPORT_FILE_NAME "${CMAKE_CURRENT_BINARY_DIR}/Include/Host/${module}/Api.h")
  target_include_directories(${target} PUBLIC
    "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/Include>"
    "$<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/Include>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ValueHost>")
  # Sources name private headers by their full path too.
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target} PUBLIC ${arg_DEPENDS} PRIVATE ${arg_PRIVATE_DEPENDS} $<BUILD_INTERFACE:ValueBuild>)
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${module}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${VALUE_LIBRARY_VERSION}
    INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${target} EXPORT ValueHostTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvaluehost NAMELINK_COMPONENT libvaluehost-dev)
  install(DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/Include/" "${CMAKE_CURRENT_BINARY_DIR}/Include/"
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ValueHost COMPONENT libvaluehost-dev)
  set_property(GLOBAL APPEND PROPERTY VALUE_HOST_LIBRARIES ${target})
endfunction()

# Debian's package of a library may name include folders of optional packages that are not installed, which CMake refuses.
function(value_drop_missing_includes target)
  get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
  set(existing)
  foreach(folder IN LISTS folders)
    if(EXISTS "${folder}")
      list(APPEND existing "${folder}")
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${existing}")
endfunction()

# With the sanitizers, a program that loads the node library keeps Qt in the process: a library behind Qt loses a few
# bytes when it is unloaded. Kept, they are found again, and the leak check goes on to see ours.
function(value_keep_qt target)
  if(VALUE_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:--no-as-needed)
    target_link_libraries(${target} PRIVATE Qt6::Core)
  endif()
endfunction()
