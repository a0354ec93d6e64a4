// SPDX-License-Identifier: Apache-2.0
//
// How the engine calls nodes, which may throw.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "Host/Image/Image.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/Node.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// Calls an operation of a node. An exception becomes the node's error state.
template <class Result, class Function>
Result CallNode(Node& node, const char* operation, Result fallback, const Function& function) {
  Status status;
  Result result = CallGuarded(operation, status, std::move(fallback), function);
  if (status.IsError()) node.SetState(0, Node::State::kError, status.GetMessage());
  return result;
}

void Tell(Node& node, std::uint32_t kind);
/// The image of an output, whatever stands in for it.
Image* GetOwnImage(Node& node, unsigned outplug);
std::string NameOf(Node& node);

}  // namespace ScEng
