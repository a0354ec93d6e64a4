# What this project needs of others, with the oldest versions that it is known to build with: those of Debian 12.

if((CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12) OR
   (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 14))
  message(FATAL_ERROR
    "${CMAKE_CXX_COMPILER} is ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}; the C++20 of this project needs "
    "GCC 12 or Clang 14, or later (Debian package g++ or clang)")
endif()

# value_require(<package> <oldest version, or ""> <Debian package> <purpose> [COMPONENTS <component>...])
#
# Finds a package, or ends with a line that says what it is needed for and how to get it. A macro, so that what the
# package sets is seen where it is called.
macro(value_require package version debian_package purpose)
  find_package(${package} QUIET ${ARGN})
  string(STRIP "${package} ${version}" value_required)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR
      "${value_required} is needed for ${purpose}, and was not found (Debian package ${debian_package}; "
      "./install-packages installs all that is needed). ${${package}_NOT_FOUND_MESSAGE}")
  elseif(NOT "${version}" STREQUAL "" AND "${${package}_VERSION}" VERSION_LESS "${version}")
    message(FATAL_ERROR
      "${value_required} or later is needed for ${purpose}, and ${package} ${${package}_VERSION} was found in "
      "${${package}_DIR} (Debian package ${debian_package})")
  endif()
endmacro()

# value_require_module(<name> <module> <oldest version> <Debian package> <purpose>)
#
# The same for a library that describes itself to pkg-config, as the target PkgConfig::<name>.
macro(value_require_module name module version debian_package purpose)
  value_require(PkgConfig "" pkg-config "${purpose}")
  pkg_check_modules(${name} QUIET IMPORTED_TARGET GLOBAL "${module}>=${version}")
  if(NOT ${name}_FOUND)
    message(FATAL_ERROR
      "${module} ${version} or later is needed for ${purpose}, and was not found (Debian package ${debian_package}; "
      "./install-packages installs all that is needed).")
  endif()
endmacro()
