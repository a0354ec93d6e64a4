// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// A node that makes an image from nothing, placed by its attribute "frame": the image has the frame's size, its pin at
/// the frame's x and y, and pivot (0, 0). Disabled, it has no output.
class ImageGeneratorNode : public Node {
 public:
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 protected:
  /// Fills a new image; its samples are unset and its header is fresh but for the pin.
  virtual void Generate(const EvaluatedInputs& inputs, Image& image) const = 0;
  [[nodiscard]] virtual unsigned GetColorMode() const { return ColorMode::kColor; }

 private:
  OutputImages<1> output_;
};

/// One colour.
class ImageRectangleNode : public ImageGeneratorNode {
  NODEKIT_NODE(ImageRectangleNode)

 public:
 protected:
  void Generate(const EvaluatedInputs& inputs, Image& image) const override;
};

/// Cells in four colours, chosen by the parity of column and row, counted from the frame's corner.
class ImageCheckerNode : public ImageGeneratorNode {
  NODEKIT_NODE(ImageCheckerNode)

 public:
 protected:
  void Generate(const EvaluatedInputs& inputs, Image& image) const override;
};

/// Sine rings around the frame's centre, as values.
class ImageWavesNode : public ImageGeneratorNode {
  NODEKIT_NODE(ImageWavesNode)

 public:
 protected:
  void Generate(const EvaluatedInputs& inputs, Image& image) const override;
  [[nodiscard]] unsigned GetColorMode() const override { return ColorMode::kValue; }
};

/// A fractal height field that tiles, as values from 0 to 1.
class ImageTerrainNode : public ImageGeneratorNode {
  NODEKIT_NODE(ImageTerrainNode)

 public:
 protected:
  void Generate(const EvaluatedInputs& inputs, Image& image) const override;
  [[nodiscard]] unsigned GetColorMode() const override { return ColorMode::kValue; }
};
