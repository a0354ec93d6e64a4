// SPDX-License-Identifier: Apache-2.0
#include "Host/NodeKit/EvaluatedInputs.h"

#include <stdexcept>

const Image* EvaluatedInputs::GetImage(unsigned input) const {
  return AtPlug(node_.GetInplugIdFromRegularInputId(input)).GetImage();
}

std::vector<const Image*> EvaluatedInputs::GetImages() const {
  std::vector<const Image*> images;
  for (const PlugValue& value : values_) {
    const Image* image = value.GetImage();
    if (image != nullptr && image->GetSizeX() >= 1 && image->GetSizeY() >= 1) images.push_back(image);
  }
  return images;
}

int EvaluatedInputs::GetChoiceIndex(const AttributeRow& row) const {
  return Find(row).GetChoiceIndex(At(row).GetText());
}

const PlugValue& EvaluatedInputs::AtPlug(unsigned plug) const {
  static const PlugValue nothing;
  return plug < values_.size() ? values_[plug] : nothing;
}

const Attribute& EvaluatedInputs::Find(const AttributeRow& row) const {
  for (std::size_t id = 0; id < node_.GetNumAttributes(); ++id) {
    const Attribute& attribute = *node_.GetAttribute(id);
    if (attribute.GetName() == row.name) return attribute;
  }
  throw std::out_of_range(node_.GetName() + " reads an attribute that it does not declare: " + row.name);
}

const PlugValue& EvaluatedInputs::At(const AttributeRow& row) const {
  return AtPlug(node_.GetInplugIdFromAttributeId(Find(row).GetId()));
}
