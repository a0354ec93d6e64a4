# Tests of the node library.

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
