// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace ScEng {

/// The two parts of "id.name", which are split at the last dot: ids may hold dots, names of plugs do not. Without a dot
/// all of it is the id.
inline std::string GetNodeOfPlug(const std::string& plug) { return plug.substr(0, plug.rfind('.')); }
inline std::string GetNameOfPlug(const std::string& plug) {
  const std::size_t dot = plug.rfind('.');
  return dot == std::string::npos ? std::string() : plug.substr(dot + 1);
}

}  // namespace ScEng
