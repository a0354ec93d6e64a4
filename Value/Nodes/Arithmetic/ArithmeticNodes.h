// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Adds images, or the constant to one image.
class ImageValueAddNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValueAddNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueAddNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueAddNode>; }
  /// Old documents carry a "mask_min" that the node no longer has.
  [[nodiscard]] bool IsObsoleteAttribute(unsigned version, const char* name) const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueAddNodeInterface : public NodeDescriptorOf<ImageValueAddNode> {};
class ImageValueAddNodeFactory : public NodeFactoryOf<ImageValueAddNode> {};

/// Subtracts the further images from the first, or the constant from one image.
class ImageValueSubtractNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValueSubtractNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueSubtractNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueSubtractNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueSubtractNodeInterface : public NodeDescriptorOf<ImageValueSubtractNode> {};
class ImageValueSubtractNodeFactory : public NodeFactoryOf<ImageValueSubtractNode> {};

/// Multiplies images, or one image by the constant.
class ImageValueMultiplyNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValueMultiplyNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueMultiplyNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueMultiplyNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueMultiplyNodeInterface : public NodeDescriptorOf<ImageValueMultiplyNode> {};
class ImageValueMultiplyNodeFactory : public NodeFactoryOf<ImageValueMultiplyNode> {};

/// Divides the first image by the others in order, or one image by the constant.
class ImageValueDivideNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValueDivideNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueDivideNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueDivideNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueDivideNodeInterface : public NodeDescriptorOf<ImageValueDivideNode> {};
class ImageValueDivideNodeFactory : public NodeFactoryOf<ImageValueDivideNode> {};

/// Raises the first image to the powers of the others in order. One image passes through: the constant is not read.
class ImageValuePowerNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValuePowerNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValuePowerNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValuePowerNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValuePowerNodeInterface : public NodeDescriptorOf<ImageValuePowerNode> {};
class ImageValuePowerNodeFactory : public NodeFactoryOf<ImageValuePowerNode> {};

/// The lowest of the images, or of one image and the constant.
class ImageValueMinimumNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValueMinimumNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueMinimumNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueMinimumNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueMinimumNodeInterface : public NodeDescriptorOf<ImageValueMinimumNode> {};
class ImageValueMinimumNodeFactory : public NodeFactoryOf<ImageValueMinimumNode> {};

/// The highest of the images, or of one image and the constant.
class ImageValueMaximumNode : public ImageValueOperationManyNode {
 public:
  static const NodeRecord kRecord;

  ImageValueMaximumNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueMaximumNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueMaximumNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueMaximumNodeInterface : public NodeDescriptorOf<ImageValueMaximumNode> {};
class ImageValueMaximumNodeFactory : public NodeFactoryOf<ImageValueMaximumNode> {};
