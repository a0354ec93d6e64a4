// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/NodeCalls.h"

namespace ScEng {

void Tell(Node& node, std::uint32_t kind) {
  NodeEvent event;
  event.kind = kind;
  CallNode(node, "OnProcessEvent", false, [&] { return node.OnProcessEvent(event); });
}

Image* GetOwnImage(Node& node, unsigned outplug) {
  return CallNode<Image*>(node, "GetOutputImage", nullptr, [&] { return node.GetOutputImage(outplug); });
}

std::string NameOf(Node& node) {
  return CallNode(node, "GetName", std::string("a node"), [&] { return node.GetName(); });
}

}  // namespace ScEng
