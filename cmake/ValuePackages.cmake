# Debian packages of an installation, one per component, made by ./package:
#
#   value                the program, the node library and the panel
#   libvaluehost         the host's libraries, and the codecs and the decoder that they load
#   libvaluehost-dev     headers, and what CMake and pkg-config want to know
#   python3-valuenodes   the Python package, where it is built
#   value-doc            documents and examples
#
# What a package holds follows from the components of the install rules alone; packages/FinishPackages.cmake brings it
# into the form that Debian's policy asks for.

set(VALUE_PACKAGE_REVISION "1" CACHE STRING "What follows the version in the version of Debian packages")
set(VALUE_PACKAGE_MAINTAINER "Value maintainers <maintainers@value.invalid>" CACHE STRING
  "Name and address that Debian packages carry")

set(packages_source "${PROJECT_SOURCE_DIR}/cmake/packages")
set(packages_build "${PROJECT_BINARY_DIR}/Packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME value)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DIRECTORY "${packages_build}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL value libvaluehost libvaluehost-dev value-doc)
if(TARGET ValuePython)
  list(APPEND CPACK_COMPONENTS_ALL python3-valuenodes)
endif()
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${packages_source}/FinishPackages.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${packages_source}/DropScripts.cmake")
# Without it every package would have the project's description before its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE value)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${VALUE_PACKAGE_REVISION}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${VALUE_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(package_version "${PROJECT_VERSION}-${VALUE_PACKAGE_REVISION}")

set(CPACK_DEBIAN_VALUE_PACKAGE_NAME value)
set(CPACK_DEBIAN_VALUE_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_VALUE_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_VALUE_PACKAGE_DEPENDS "libvaluehost (= ${package_version})")
# One node computes on OpenCL devices; the other nodes work without. Pictures of graphs are laid out by Graphviz.
set(CPACK_DEBIAN_VALUE_PACKAGE_RECOMMENDS "ocl-icd-libopencl1 | libopencl1, pocl-opencl-icd | opencl-icd")
set(CPACK_DEBIAN_VALUE_PACKAGE_SUGGESTS "graphviz, value-doc")
set(CPACK_COMPONENT_VALUE_DESCRIPTION
"image nodes that read samples as values, on the command line
Value applies one image node, or a graph of them, to image files. Its nodes
read samples as values: height, intensity, the strength of a mask. There is
arithmetic, comparison, clamping, steps, relief, distance, gradient, ambient
occlusion and more.

This package has the program, the library of nodes and the window with their
settings.")

set(CPACK_DEBIAN_LIBVALUEHOST_PACKAGE_NAME libvaluehost)
set(CPACK_DEBIAN_LIBVALUEHOST_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBVALUEHOST_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBVALUEHOST_PACKAGE_SUGGESTS "ocl-icd-libopencl1 | libopencl1, opencl-icd")
set(CPACK_COMPONENT_LIBVALUEHOST_DESCRIPTION
"host of image nodes
These libraries load libraries of image nodes, connect nodes to graphs and
evaluate them, read and write image files with their metadata, and show the
settings of nodes in panels.

Image files are decoded in a process of its own that has neither the network
nor other files.")

set(CPACK_DEBIAN_LIBVALUEHOST-DEV_PACKAGE_NAME libvaluehost-dev)
set(CPACK_DEBIAN_LIBVALUEHOST-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBVALUEHOST-DEV_PACKAGE_DEPENDS "libvaluehost (= ${package_version})")
# Icons of node libraries and panels in programs of one's own need Qt; everything else does without.
set(CPACK_DEBIAN_LIBVALUEHOST-DEV_PACKAGE_RECOMMENDS "qt6-base-dev")
set(CPACK_DEBIAN_LIBVALUEHOST-DEV_PACKAGE_SUGGESTS "cmake, pkgconf, value, value-doc")
set(CPACK_COMPONENT_LIBVALUEHOST-DEV_DESCRIPTION
"host of image nodes, development files
This package has the headers of the host, and what CMake and pkg-config want
to know, for two kinds of projects: libraries of image nodes that the program
\"value\" and other hosts load, and programs that are hosts themselves. Both are
written in C++20.")

set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_NAME python3-valuenodes)
set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_SHLIBDEPS ON)
if(TARGET ValuePython)
  # The module is for one Python alone. The nodes are in the package of the program.
  get_directory_property(python_major DIRECTORY Python DEFINITION Python_VERSION_MAJOR)
  get_directory_property(python_minor DIRECTORY Python DEFINITION Python_VERSION_MINOR)
  math(EXPR next_python "${python_minor} + 1")
  set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_DEPENDS
    "python3 (>= ${python_major}.${python_minor}), python3 (<< ${python_major}.${next_python}), \
libvaluehost (= ${package_version}), value (= ${package_version})")
endif()
# Without numpy images come from buffers and files, and go there. Pictures of graphs are laid out by Graphviz.
set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_RECOMMENDS "python3-numpy")
set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_SUGGESTS "graphviz, value-doc")
set(CPACK_DEBIAN_PYTHON3-VALUENODES_PACKAGE_CONTROL_EXTRA
  "${packages_source}/python3-valuenodes/postinst;${packages_source}/python3-valuenodes/prerm")
set(CPACK_COMPONENT_PYTHON3-VALUENODES_DESCRIPTION
"image nodes that read samples as values, for Python
This package has every image node of Value as a function of images or arrays
of numpy. It also reads and writes image files with their metadata, builds
and evaluates graphs of nodes, and makes classes of Python nodes.")

set(CPACK_DEBIAN_VALUE-DOC_PACKAGE_NAME value-doc)
set(CPACK_DEBIAN_VALUE-DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_VALUE-DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_VALUE-DOC_PACKAGE_SUGGESTS "value, libvaluehost-dev")
set(CPACK_COMPONENT_VALUE-DOC_DESCRIPTION
"image nodes that read samples as values, documents and examples
This package has a page for every node, the guides to graphs, files, panels
and to writing nodes and hosts, and the example graphs with their images.")

# Programs of others ask for the libraries of this minor version, whichever package they find them in.
get_property(host_libraries GLOBAL PROPERTY VALUE_HOST_LIBRARIES)
math(EXPR next_minor "${PROJECT_VERSION_MINOR} + 1")
set(shlibs "")
foreach(library IN LISTS host_libraries)
  string(APPEND shlibs "lib${library} ${VALUE_LIBRARY_VERSION} "
    "libvaluehost (>= ${PROJECT_VERSION}), libvaluehost (<< ${PROJECT_VERSION_MAJOR}.${next_minor}~)\n")
endforeach()
file(CONFIGURE OUTPUT "${packages_build}/shlibs" CONTENT "${shlibs}" @ONLY)
set(CPACK_DEBIAN_LIBVALUEHOST_PACKAGE_CONTROL_EXTRA "${packages_build}/shlibs;${packages_source}/triggers")
# The program links libraries that are packed at the same time, and depends on their package by name.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

set(CPACK_VALUE_PACKAGES_SOURCE "${packages_source}")
set(CPACK_VALUE_PACKAGE_VERSION "${package_version}")
set(CPACK_VALUE_CHANGELOG "${PROJECT_SOURCE_DIR}/CHANGELOG.md")
set(CPACK_VALUE_STRIP "${CMAKE_STRIP}")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
