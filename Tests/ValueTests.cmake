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
    "${value_dir}/Operations/OperationLoopsTest.cpp"
    "${value_dir}/Operations/ThresholdValueOperationTest.cpp"
  DEPENDS ValueObjects ValueHost::Tools ValueHost::Image)

value_add_test(ValueNodeTests
  SOURCES
    Contract/CatalogTest.cpp
    Support/WatchedMemory.cpp
    "${value_dir}/Nodes/AnalysisNodesTest.cpp"
    "${value_dir}/Nodes/Arithmetic/ArithmeticNodesTest.cpp"
    "${value_dir}/Nodes/Clamp/ClampTest.cpp"
    "${value_dir}/Nodes/Compare/CompareTest.cpp"
    "${value_dir}/Nodes/Components/ComponentEdgesTest.cpp"
    "${value_dir}/Nodes/Components/ComponentLabelsTest.cpp"
    "${value_dir}/Nodes/Components/ComponentNodesTest.cpp"
    "${value_dir}/Nodes/EveryNodeTest.cpp"
    "${value_dir}/Nodes/AmbientOcclusion/ImageAmbientOcclusionNodeTest.cpp"
    "${value_dir}/Nodes/Components/ImageComponentEdgesNodeTest.cpp"
    "${value_dir}/Nodes/Gradient/ImageComputeGradientNodeTest.cpp"
    "${value_dir}/Nodes/Components/ImageConnectedComponentsNodeTest.cpp"
    "${value_dir}/Nodes/Distance/ImageEuclideanDistanceNodeTest.cpp"
    "${value_dir}/Nodes/Relief/ImageReliefNodeTest.cpp"
    "${value_dir}/Nodes/ToValue/ImageToValueNodeTest.cpp"
    "${value_dir}/Nodes/Clamp/ImageValueClampNodeTest.cpp"
    "${value_dir}/Nodes/Compare/ImageValueCompareNodeTest.cpp"
    "${value_dir}/Nodes/Condition/ImageValueConditionNodeTest.cpp"
    "${value_dir}/Nodes/Function/ImageValueFunctionNodeTest.cpp"
    "${value_dir}/Nodes/Range/ImageValueRangeNodeTest.cpp"
    "${value_dir}/Nodes/Steps/ImageValueStepsNodeTest.cpp"
    "${value_dir}/Nodes/Relief/ReliefBevelTest.cpp"
    "${value_dir}/Nodes/Relief/ReliefLevelsTest.cpp"
    "${value_dir}/Nodes/Steps/StepsTest.cpp"
    "${value_dir}/Nodes/ToValue/ToValueTest.cpp"
    "${value_dir}/SelfTests/SelfTestsTest.cpp"
  DEPENDS ValueObjects ValueHost::Nodes ValueHost::Tools ValueHost::Image hwy::hwy
  ENVIRONMENT ${gpu_test_environment})

value_add_test(ValueContractTests
  SOURCES
    Contract/CancellationTest.cpp
    Contract/EveryNodeContractTest.cpp
    Contract/ValueNodePropertiesTest.cpp
    Contract/ValueNodeReferences.cpp
  DEPENDS ValueObjects ValueHost::Tools ValueHost::Image hwy::hwy
  ENVIRONMENT ${gpu_test_environment})
