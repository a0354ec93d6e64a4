// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Math/Geometry.h"
#include "Host/NodeKit/Api.h"
#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Node.h"

/// What the plugs of a node carry in one evaluation: images by the number of their input, attributes by their row (any
/// row of that name does).
///
/// An attribute plug that carries no value reads as 0, false, the empty string and so on, not as the attribute's own
/// value. Reading an attribute that the node does not have throws `std::out_of_range`, a fault of the node class.
class HOST_NODEKIT_API EvaluatedInputs {
 public:
  /// Both outlive this object.
  EvaluatedInputs(const Node& node, const std::vector<PlugValue>& values) : node_(node), values_(values) {}

  /// The image at a regular input that takes one connection; null where there is none.
  [[nodiscard]] const Image* GetImage(unsigned input = 0) const;
  /// All images with at least one pixel, of every input, in the order of inputs and connections.
  [[nodiscard]] std::vector<const Image*> GetImages() const;

  /// Numbers travel as doubles; most nodes compute with floats.
  [[nodiscard]] double GetDouble(const AttributeRow& row) const { return At(row).GetNumber(); }
  [[nodiscard]] float GetNumber(const AttributeRow& row) const { return static_cast<float>(GetDouble(row)); }
  /// A number of whole pixels: halves go down, and what is beyond the range of int counts as its end.
  [[nodiscard]] int GetWholePixels(const AttributeRow& row) const { return ScEng::RoundHalfDown(GetDouble(row)); }
  [[nodiscard]] bool GetFlag(const AttributeRow& row) const { return At(row).GetFlag(); }
  [[nodiscard]] std::string GetText(const AttributeRow& row) const { return At(row).GetText(); }
  /// The index of the word that the plug carries; -1 for a word that is not in the attribute's list.
  [[nodiscard]] int GetChoiceIndex(const AttributeRow& row) const;
  [[nodiscard]] ScEng::Rgbo GetColor(const AttributeRow& row) const { return At(row).GetColor(); }
  [[nodiscard]] ScEng::Point GetPoint(const AttributeRow& row) const { return At(row).GetPoint(); }
  [[nodiscard]] ScEng::Frame GetFrame(const AttributeRow& row) const { return At(row).GetFrame(); }

 private:
  [[nodiscard]] const PlugValue& AtPlug(unsigned plug) const;
  [[nodiscard]] const Attribute& Find(const AttributeRow& row) const;
  [[nodiscard]] const PlugValue& At(const AttributeRow& row) const;

  const Node& node_;
  const std::vector<PlugValue>& values_;
};
