# Tests of the node library.

# Of the built file: what it exports, its virtual tables, its icons.
value_add_test(ValueAbiTests
  SOURCES
    Abi/ExportsTest.cpp
    Abi/IconsTest.cpp
    Abi/LoadedLibrary.cpp
    Abi/VirtualTablesTest.cpp
  DEPENDS ValueHost::Tools ValueHost::Image Qt6::Core ${CMAKE_DL_LIBS})

set(value_dir "${PROJECT_SOURCE_DIR}/Value")

value_add_test(ValueOperationTests
  SOURCES
    Support/WatchedMemory.cpp
    "${value_dir}/Operations/ArithmeticOperationsTest.cpp"
    "${value_dir}/Operations/ConditionOperationsTest.cpp"
    "${value_dir}/Operations/FunctionOperationsTest.cpp"
    "${value_dir}/Operations/ImageValueOperationNodesTest.cpp"
    "${value_dir}/Operations/NearestFloat/NearestFloatTest.cpp"
    "${value_dir}/Operations/OperationLoopsTest.cpp"
    "${value_dir}/Operations/OperationPassesTest.cpp"
    "${value_dir}/Operations/ThresholdValueOperationTest.cpp"
  DEPENDS ValueObjects ValueHost::Tools ValueHost::Image hwy::hwy PkgConfig::Mpfr)

# The proofs over all floats take long: ./check --proofs runs them, no test does.
set_source_files_properties(Proofs/LibraryRows.cpp PROPERTIES COMPILE_OPTIONS "-O3;-ffast-math")
foreach(proof Functions:functions Power:power)
  string(REPLACE ":" ";" proof "${proof}")
  list(GET proof 0 source)
  list(GET proof 1 program)
  add_executable(Prove${source} Proofs/LibraryRows.cpp Proofs/Prove${source}.cpp)
  target_include_directories(Prove${source} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(Prove${source} PRIVATE ValueObjects ValueBuild hwy::hwy PkgConfig::Mpfr)
  set_target_properties(Prove${source} PROPERTIES OUTPUT_NAME "prove-${program}")
endforeach()

# Tests beside the nodes are found by their names, so that a new node needs no line here.
file(GLOB_RECURSE node_tests CONFIGURE_DEPENDS "${value_dir}/Nodes/*Test.cpp")
value_add_test(ValueNodeTests
  SOURCES
    Contract/CatalogTest.cpp
    Support/WatchedMemory.cpp
    ${node_tests}
    "${value_dir}/SelfTests/SelfTestsTest.cpp"
  DEPENDS ValueObjects ValueHost::Nodes ValueHost::Tools ValueHost::Image hwy::hwy
  ENVIRONMENT ${gpu_test_environment})

# In a program of its own, which counts the bytes of all samples.
value_add_test(ValueChainTests
  SOURCES
    Contract/AnyChainTest.cpp
    Contract/ChangedChainsTest.cpp
    Contract/ChainsTest.cpp
  DEPENDS ValueObjects ValueHost::Tools ValueHost::Image hwy::hwy)

value_add_test(ValueContractTests
  SOURCES
    Contract/CancellationTest.cpp
    Contract/EffectTest.cpp
    Contract/EveryNodeContractTest.cpp
    Contract/ReachTest.cpp
    Contract/ValueNodePropertiesTest.cpp
    Contract/ValueNodeReferences.cpp
  DEPENDS ValueObjects ValueHost::Tools ValueHost::Image hwy::hwy
  ENVIRONMENT ${gpu_test_environment})
