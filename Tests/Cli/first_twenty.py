"""The node types that the library started with, by class name with their three numbers.

Their order, names and numbers stay; types that are added follow them. Tests/Support/FirstTwenty.h has the same list for
C++.
"""

FIRST_TWENTY = {
    "ImageToValueNode": [10, 320, 0],
    "ImageValueAddNode": [10, 320, 5],
    "ImageValueSubtractNode": [10, 320, 90],
    "ImageValueMultiplyNode": [10, 320, 10],
    "ImageValueDivideNode": [10, 320, 96],
    "ImageValuePowerNode": [10, 320, 69],
    "ImageValueMinimumNode": [10, 320, 16],
    "ImageValueMaximumNode": [10, 320, 21],
    "ImageValueClampNode": [10, 320, 42],
    "ImageValueStepsNode": [10, 320, 80],
    "ImageValueConditionNode": [10, 320, 32],
    "ImageValueCompareNode": [10, 320, 37],
    "ImageValueRangeNode": [10, 320, 58],
    "ImageValueFunctionNode": [10, 320, 64],
    "ImageReliefNode": [10, 288, 26],
    "ImageEuclideanDistanceNode": [10, 288, 74],
    "ImageComputeGradientNode": [10, 320, 48],
    "ImageAmbientOcclusionNode": [10, 320, 85],
    "ImageConnectedComponentsNode": [10, 320, 101],
    "ImageComponentEdgesNode": [10, 320, 106],
}
