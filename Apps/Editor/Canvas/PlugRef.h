// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

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

/// The two parts of "id.name", which are split at the last dot.
inline std::string GetNodeOfPlug(const std::string& plug) { return plug.substr(0, plug.rfind('.')); }
inline std::string GetNameOfPlug(const std::string& plug) {
  const std::size_t dot = plug.rfind('.');
  return dot == std::string::npos ? std::string() : plug.substr(dot + 1);
}
