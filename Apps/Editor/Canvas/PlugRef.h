// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Documents/PlugName.h"
#include "Host/Tools/PlugValue.h"

/// A plug of a node, by name.
struct PlugRef {
  std::string node;
  std::string name;
  /// Of an input that takes many: the place among its connections.
  unsigned index = 0;
  /// `PlugType::kNone` where it is not known.
  unsigned type = PlugType::kNone;
  bool is_input = false;

  [[nodiscard]] bool IsValid() const { return !node.empty(); }
  /// "id.name"
  [[nodiscard]] std::string GetPlug() const { return node + "." + name; }
  friend bool operator==(const PlugRef&, const PlugRef&) = default;
};

using ScEng::GetNameOfPlug;
using ScEng::GetNodeOfPlug;
