// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Nodes/HostNode.h"
#include "Host/Nodes/HostNodes.h"

/// A node that makes an image from nothing, placed by its attribute "frame": the image has the frame's size, its pin at
/// the frame's x and y, and pivot (0, 0). Disabled, it has no output.
class ImageGeneratorNode : public ScEng::HostImageNode {
 public:
  ImageGeneratorNode();
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;

 protected:
  /// Fills a new image; its samples are unset and its header is fresh but for the pin.
  virtual void Generate(const std::vector<PlugValue>& inputs, Image& image) const = 0;
  [[nodiscard]] virtual unsigned GetColorMode() const { return ColorMode::kColor; }
};

/// One colour.
class ImageRectangleNode : public ImageGeneratorNode {
 public:
  static constexpr NodeType kType = ScEng::kImageRectangleType;
  static constexpr const char* kTypeName = "ImageRectangleNode";
  static constexpr const char* kDisplayName = "Image Rectangle";

  ImageRectangleNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }

 protected:
  void Generate(const std::vector<PlugValue>& inputs, Image& image) const override;
};

/// Cells in four colours, chosen by the parity of column and row, counted from the frame's corner.
class ImageCheckerNode : public ImageGeneratorNode {
 public:
  static constexpr NodeType kType = ScEng::kImageCheckerType;
  static constexpr const char* kTypeName = "ImageCheckerNode";
  static constexpr const char* kDisplayName = "Image Checker";

  ImageCheckerNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }

 protected:
  void Generate(const std::vector<PlugValue>& inputs, Image& image) const override;
};

/// Sine rings around the frame's centre, as values.
class ImageWavesNode : public ImageGeneratorNode {
 public:
  static constexpr NodeType kType = ScEng::kImageWavesType;
  static constexpr const char* kTypeName = "ImageWavesNode";
  static constexpr const char* kDisplayName = "Image Waves";

  ImageWavesNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }

 protected:
  void Generate(const std::vector<PlugValue>& inputs, Image& image) const override;
  [[nodiscard]] unsigned GetColorMode() const override { return ColorMode::kValue; }
};

/// A fractal height field that tiles, as values from 0 to 1.
class ImageTerrainNode : public ImageGeneratorNode {
 public:
  static constexpr NodeType kType = ScEng::kImageTerrainType;
  static constexpr const char* kTypeName = "ImageTerrainNode";
  static constexpr const char* kDisplayName = "Image Terrain";

  ImageTerrainNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }

 protected:
  void Generate(const std::vector<PlugValue>& inputs, Image& image) const override;
  [[nodiscard]] unsigned GetColorMode() const override { return ColorMode::kValue; }
};
