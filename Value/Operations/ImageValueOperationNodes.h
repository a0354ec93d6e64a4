// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "Host/Image/ValueOperation.h"
#include "Host/NodeKit/OutputImages.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"

/// The base of nodes that apply a value operation to the one image at input "image".
class ImageValueOperationOneNode : public Node {
 public:
  ImageValueOperationOneNode();
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

  /// Slot 62. A new operation for one evaluation, or null; the caller frees it.
  [[nodiscard]] virtual ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) = 0;

 private:
  OutputImages<1> output_;
};

/// The base of nodes that combine the images at inputs "image_a" and "image_b". With one of them connected the result
/// is a copy of that one: the operation is not applied.
class ImageValueOperationTwoNode : public Node {
 public:
  static constexpr PlugRow kInputs[] = {ImagePlug("image_a"), ImagePlug("image_b")};

  ImageValueOperationTwoNode();
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

  /// Slot 62. As above.
  [[nodiscard]] virtual ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) = 0;

 private:
  OutputImages<1> output_;
};

/// The base of the arithmetic nodes: any number of images at input "image", folded in connection order, or one image
/// combined with the attribute "constant".
class ImageValueOperationManyNode : public Node {
 public:
  static constexpr PlugRow kInputs[] = {ImagesPlug("image")};

  /// The row of "constant", as the record of a derived node has it.
  static constexpr AttributeRow MakeConstantRow(double value, const char* text) {
    // The step is the single-precision 0.01.
    return NumberRow("constant", value, -1e9, 1e9, static_cast<double>(0.01F), 3, text).OnlyWithImages(1, 1);
  }

  ImageValueOperationManyNode();
  /// The constant was once called "value".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

  /// Slot 62. As above.
  [[nodiscard]] virtual ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) = 0;

 protected:
  /// What the plug of "constant" carries, as the operations take it.
  [[nodiscard]] float ReadConstant(const std::vector<PlugValue>& inputs) const;

 private:
  OutputImages<1> output_;
};
