# Tests of the host's libraries, and the small libraries that they load.
set(host "${PROJECT_SOURCE_DIR}/Host")

# value_add_test_library(<name> SOURCE <file> [DEPENDS <target>...] [DEFINITIONS <definition>...])
#
# A library that the tests load by file: <name>.so in the folder that VALUE_TEST_LIBRARIES names.
function(value_add_test_library name)
  cmake_parse_arguments(arg "" "SOURCE" "DEPENDS;DEFINITIONS" ${ARGN})
  set(target TestLibrary${name})
  add_library(${target} MODULE "${PROJECT_SOURCE_DIR}/Tests/Libraries/${arg_SOURCE}")
  target_link_libraries(${target} PRIVATE ${arg_DEPENDS} ValueBuild)
  target_compile_definitions(${target} PRIVATE ${arg_DEFINITIONS})
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    SUFFIX ".so"
    OUTPUT_NAME ${name}
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/TestLibraries")
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The loader never unloads a library that defines unique symbols.
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
endfunction()

value_add_test_library(TwinTwo SOURCE TwinOperation.cpp
  DEPENDS ValueHost::Image DEFINITIONS VALUE_TWIN_FACTOR=2.0F)
value_add_test_library(TwinThree SOURCE TwinOperation.cpp
  DEPENDS ValueHost::Image DEFINITIONS VALUE_TWIN_FACTOR=3.0F)

set(node_libraries
  ExportsNothing
  ForeignFactory
  LacksOneExport
  NegativeCount
  NoFactory
  NullDescriptor
  NullLibraryObject
  TakenNumbers
  ThrowingEntry
  TinyLibrary)
foreach(library IN LISTS node_libraries)
  value_add_test_library(${library} SOURCE ${library}.cpp DEPENDS ValueHost::Tools)
endforeach()
list(TRANSFORM node_libraries PREPEND TestLibrary OUTPUT_VARIABLE node_library_targets)

value_add_test(HostBaseTests
  SOURCES
    "${host}/Math/GeometryTest.cpp"
    "${host}/Util/LogTest.cpp"
    "${host}/Util/ParallelRowsTest.cpp"
    "${host}/Util/RefCounterTest.cpp"
    "${host}/Util/ThreadPoolTest.cpp"
  DEPENDS ValueHost::Image)

value_add_test(HostImageTests
  SOURCES
    "${host}/Image/ComputeValueTest.cpp"
    "${host}/Image/ImageTest.cpp"
    "${host}/Image/SampleRangeTest.cpp"
  DEPENDS ValueHost::Image hwy::hwy ${CMAKE_DL_LIBS})
add_dependencies(HostImageTests TestLibraryTwinTwo TestLibraryTwinThree)

value_add_test(HostToolsTests
  SOURCES
    "${host}/Tools/AttributeTest.cpp"
    "${host}/Tools/EngineTest.cpp"
    "${host}/Tools/NodeLibraryTest.cpp"
    "${host}/Tools/NodeTest.cpp"
  DEPENDS ValueHost::Tools ${CMAKE_DL_LIBS})
add_dependencies(HostToolsTests ${node_library_targets})

value_add_test(HostFilesTests
  SOURCES
    "${host}/Documents/GraphDocumentTest.cpp"
    "${host}/Files/ImageFileTest.cpp"
    "${host}/Nodes/HostNodesTest.cpp"
  DEPENDS ValueHost::Documents ValueHost::Nodes OpenImageIO::OpenImageIO
  # A damaged file makes a library of image formats leak; which one shows only in whole call stacks.
  ENVIRONMENT
    "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/Sanitizers/leaks.supp"
    "ASAN_OPTIONS=fast_unwind_on_malloc=0")
