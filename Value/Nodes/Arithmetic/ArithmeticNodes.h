// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Adds images, or the constant to one image.
class ImageValueAddNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValueAddNode)

 public:
  /// Old documents carry a "mask_min" that the node no longer has.
  [[nodiscard]] bool IsObsoleteAttribute(unsigned version, const char* name) const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueAddNode)

/// Subtracts the further images from the first, or the constant from one image.
class ImageValueSubtractNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValueSubtractNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueSubtractNode)

/// Multiplies images, or one image by the constant.
class ImageValueMultiplyNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValueMultiplyNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueMultiplyNode)

/// Divides the first image by the others in order, or one image by the constant.
class ImageValueDivideNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValueDivideNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueDivideNode)

/// Raises the first image to the powers of the others in order. One image passes through: the constant is not read.
class ImageValuePowerNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValuePowerNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValuePowerNode)

/// The lowest of the images, or of one image and the constant.
class ImageValueMinimumNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValueMinimumNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueMinimumNode)

/// The highest of the images, or of one image and the constant.
class ImageValueMaximumNode : public ImageValueOperationManyNode {
  NODEKIT_NODE(ImageValueMaximumNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueMaximumNode)
