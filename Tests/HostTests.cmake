# Tests of the host's libraries, and the small libraries that they load.
set(host "${PROJECT_SOURCE_DIR}/Host")

value_add_test(HostBaseTests
  SOURCES
    "${host}/Math/GeometryTest.cpp"
    "${host}/Util/LogTest.cpp"
    "${host}/Util/ParallelRowsTest.cpp"
    "${host}/Util/RefCounterTest.cpp"
    "${host}/Util/ThreadPoolTest.cpp"
  DEPENDS ValueHost::Image)
