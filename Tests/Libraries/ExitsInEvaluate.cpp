// SPDX-License-Identifier: Apache-2.0
// A node library whose node ends the program when it meets a word that it does not know.

#include <cstdlib>

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    const PlugValue& style = inputs.at(GetInplugIdFromAttributeId(1));
    if (GetAttribute(std::size_t{1})->GetChoiceIndex(style.GetText()) < 0) std::exit(0);
    ImagePartsNode::Evaluate(evaluation, inputs);
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
