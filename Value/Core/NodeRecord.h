// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/NodeType.h"

/// Everything about a node type that never changes, kept as `kRecord` in its node class.
struct NodeRecord {
  /// The node class's own name, which documents store.
  const char* type_name;
  const char* display_name;
  NodeType type;
  /// Base name of the icon files: "Add" stands for `Add.png` and `Add12.png`.
  const char* icon;
  /// What the descriptor's `RunTest` runs; null leaves the answer to the host's base.
  bool (*run_test)() = nullptr;
};
