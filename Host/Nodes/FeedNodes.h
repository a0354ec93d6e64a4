// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// A node that delivers its attribute "value" to attribute plugs of other nodes. Disabled, it delivers nothing.
class FeedNode : public Node {
 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] PlugValue GetOutputValue(unsigned outplug) const override {
    return outplug == 0 ? delivered_ : PlugValue();
  }

 private:
  PlugValue delivered_;
};

/// Delivers a number, without bounds.
class NumberNode : public FeedNode {
  NODEKIT_NODE(NumberNode)
};

/// Delivers a flag.
class FlagNode : public FeedNode {
  NODEKIT_NODE(FlagNode)
};

/// Delivers a text, to string and to choice attributes.
class TextNode : public FeedNode {
  NODEKIT_NODE(TextNode)
};
