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
    "${value_dir}/Nodes/AnalysisNodesTest.cpp"
    "${value_dir}/Nodes/ArithmeticNodesTest.cpp"
    "${value_dir}/Nodes/ClampTest.cpp"
    "${value_dir}/Nodes/CompareTest.cpp"
    "${value_dir}/Nodes/ComponentEdgesTest.cpp"
    "${value_dir}/Nodes/ComponentLabelsTest.cpp"
    "${value_dir}/Nodes/ComponentNodesTest.cpp"
    "${value_dir}/Nodes/EveryNodeTest.cpp"
    "${value_dir}/Nodes/ImageAmbientOcclusionNodeTest.cpp"
    "${value_dir}/Nodes/ImageComponentEdgesNodeTest.cpp"
    "${value_dir}/Nodes/ImageComputeGradientNodeTest.cpp"
    "${value_dir}/Nodes/ImageConnectedComponentsNodeTest.cpp"
    "${value_dir}/Nodes/ImageEuclideanDistanceNodeTest.cpp"
    "${value_dir}/Nodes/ImageReliefNodeTest.cpp"
    "${value_dir}/Nodes/ImageToValueNodeTest.cpp"
    "${value_dir}/Nodes/ImageValueClampNodeTest.cpp"
    "${value_dir}/Nodes/ImageValueCompareNodeTest.cpp"
    "${value_dir}/Nodes/ImageValueConditionNodeTest.cpp"
    "${value_dir}/Nodes/ImageValueFunctionNodeTest.cpp"
    "${value_dir}/Nodes/ImageValueRangeNodeTest.cpp"
    "${value_dir}/Nodes/ImageValueStepsNodeTest.cpp"
    "${value_dir}/Nodes/ReliefBevelTest.cpp"
    "${value_dir}/Nodes/ReliefLevelsTest.cpp"
    "${value_dir}/Nodes/StepsTest.cpp"
    "${value_dir}/Nodes/ToValueTest.cpp"
    "${value_dir}/SelfTests/SelfTestsTest.cpp"
  DEPENDS ValueObjects ValueHost::Nodes ValueHost::Tools ValueHost::Image hwy::hwy
  ENVIRONMENT ${gpu_test_environment})

value_add_test(ValueContractTests
  SOURCES
    Contract/EveryNodeContractTest.cpp
    Contract/ValueNodePropertiesTest.cpp
    Contract/ValueNodeReferences.cpp
  DEPENDS ValueObjects ValueHost::Tools ValueHost::Image hwy::hwy
  ENVIRONMENT ${gpu_test_environment})
