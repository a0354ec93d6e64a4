# An installation that works wherever it is put: programs, host libraries, the node library, headers, and a package with
# which other projects find the host and build node libraries of their own.

include(CMakePackageConfigHelpers)

set(VALUE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ValueHost")

install(TARGETS ValueProgram RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS Value LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/value")
install(FILES "${PROJECT_SOURCE_DIR}/Host/Documents/graph.schema.json" DESTINATION "${CMAKE_INSTALL_DATADIR}/value")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Value/SelfTests/Data/input"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/value/selftest")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")

install(EXPORT ValueHostTargets NAMESPACE ValueHost:: DESTINATION "${VALUE_PACKAGE_DIR}")
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
  DESTINATION "${VALUE_PACKAGE_DIR}")
