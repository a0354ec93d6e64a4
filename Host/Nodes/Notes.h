// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"

namespace ScEng {

/// Puts a node with remarks into the warning state, one remark a line; without any its state stays.
inline void ReportNotes(Node& node, unsigned evaluation, const std::vector<std::string>& notes) {
  std::string lines;
  for (const std::string& note : notes) lines += (lines.empty() ? "" : "\n") + note;
  if (!lines.empty()) node.SetState(evaluation, Node::State::kWarning, lines);
}

}  // namespace ScEng
