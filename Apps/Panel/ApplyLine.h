// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

class Node;

/// What a line of `value apply` says.
struct ApplyLine {
  /// As people call the node.
  std::string name;
  /// The files that go in, as they were written; those that were made for the panel have a name to be filled in.
  std::vector<std::string> inputs;
  /// The range that was declared for the inputs; empty for none.
  std::string range;
  /// The output that is written, where it is not the first one.
  std::string outplug;
};

/// The command that does what the node does, for a shell: with every attribute that is not as it is at first.
[[nodiscard]] std::string MakeApplyLine(const ApplyLine& line, const Node& node);
