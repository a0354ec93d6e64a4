// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/FeedNodes.h"

#include <limits>

NumberNode::NumberNode() : FeedNode(PlugType::kNumber, "number") {
  constexpr double kMost = std::numeric_limits<double>::max();
  AddAttribute("value", 0.0, -kMost, kMost, 0.01, 6);
  UpdateInplugsAndOutplugs();
}

FlagNode::FlagNode() : FeedNode(PlugType::kFlag, "flag") {
  AddAttribute("value", false);
  UpdateInplugsAndOutplugs();
}

TextNode::TextNode() : FeedNode(PlugType::kText, "text") {
  AddAttribute("value", std::string());
  UpdateInplugsAndOutplugs();
}
