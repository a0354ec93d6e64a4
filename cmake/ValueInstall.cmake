# An installation that works wherever it is put: programs, host libraries, the node library, headers, documents, and
# packages with which other projects find the host and build node libraries of their own.
#
# Components are the Debian packages of ValuePackages.cmake. "license" is none of them: there, every package has a
# copyright file.

include(CMakePackageConfigHelpers)

set(VALUE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ValueHost")

install(TARGETS ValueProgram RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT value)
install(TARGETS Value LIBRARY DESTINATION "${VALUE_MODULE_DIR}" COMPONENT value)
install(FILES "${PROJECT_SOURCE_DIR}/Host/Documents/graph.schema.json"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/value" COMPONENT value)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Value/SelfTests/Data/input"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/value/selftest" COMPONENT value)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT license)

install(FILES "${PROJECT_SOURCE_DIR}/README.md" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/value-doc" COMPONENT value-doc)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Docs" "${PROJECT_SOURCE_DIR}/Examples"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/value-doc" COMPONENT value-doc)

install(EXPORT ValueHostTargets NAMESPACE ValueHost:: DESTINATION "${VALUE_PACKAGE_DIR}" COMPONENT libvaluehost-dev)
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/ValueHostConfig.cmake.in" "${PROJECT_BINARY_DIR}/ValueHostConfig.cmake"
  INSTALL_DESTINATION "${VALUE_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ValueHostConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/ValueHostConfig.cmake"
  "${PROJECT_BINARY_DIR}/ValueHostConfigVersion.cmake"
  "${PROJECT_SOURCE_DIR}/cmake/ValueHardening.cmake"
  "${PROJECT_SOURCE_DIR}/cmake/ValueNodeLibrary.cmake"
  DESTINATION "${VALUE_PACKAGE_DIR}" COMPONENT libvaluehost-dev)

# For builds that ask pkg-config: all libraries but the widgets, which need Qt and have a description of their own.
get_property(host_libraries GLOBAL PROPERTY VALUE_HOST_LIBRARIES)
set(VALUE_PKGCONFIG_LIBRARIES ${host_libraries})
list(REMOVE_ITEM VALUE_PKGCONFIG_LIBRARIES HostWidgets)
# What depends on others comes first.
list(REVERSE VALUE_PKGCONFIG_LIBRARIES)
list(TRANSFORM VALUE_PKGCONFIG_LIBRARIES PREPEND "-l")
list(JOIN VALUE_PKGCONFIG_LIBRARIES " " VALUE_PKGCONFIG_LIBRARIES)
file(RELATIVE_PATH VALUE_PREFIX_FROM_PKGCONFIG
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" VALUE_PREFIX_FROM_PKGCONFIG "${VALUE_PREFIX_FROM_PKGCONFIG}")
foreach(description valuehost valuehost-widgets)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${description}.pc.in" "${PROJECT_BINARY_DIR}/${description}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${description}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT libvaluehost-dev)
endforeach()
