// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Node.h"

/// What the plugs of a node carry in one evaluation, read by the ids under which the node declared them.
///
/// An attribute plug that carries no value reads as 0, false or the empty string, not as the attribute's own value.
class EvaluatedInputs {
 public:
  EvaluatedInputs(const Node& node, const std::vector<PlugValue>& values) : node_(node), values_(values) {}

  /// The image at a regular input; null where there is none.
  [[nodiscard]] const Image* GetImage(unsigned input) const {
    return At(node_.GetInplugIdFromRegularInputId(input)).GetImage();
  }
  /// The number as the plug carries it.
  [[nodiscard]] double GetDouble(unsigned attribute) const { return AtAttribute(attribute).GetNumber(); }
  [[nodiscard]] float GetNumber(unsigned attribute) const { return static_cast<float>(GetDouble(attribute)); }
  [[nodiscard]] bool GetFlag(unsigned attribute) const { return AtAttribute(attribute).GetFlag(); }
  /// The index of the word that the plug carries; -1 for a word that is not in the attribute's list.
  [[nodiscard]] int GetChoiceIndex(unsigned attribute) const {
    return node_.GetAttribute(std::size_t{attribute})->GetChoiceIndex(AtAttribute(attribute).GetText());
  }

 private:
  [[nodiscard]] const PlugValue& At(unsigned plug) const {
    static const PlugValue nothing;
    return plug < values_.size() ? values_[plug] : nothing;
  }
  [[nodiscard]] const PlugValue& AtAttribute(unsigned attribute) const {
    return At(node_.GetInplugIdFromAttributeId(attribute));
  }

  const Node& node_;
  const std::vector<PlugValue>& values_;
};
