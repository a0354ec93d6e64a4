// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "Host/Files/ImageFile.h"
#include "Host/NodeKit/EvaluatedInputs.h"

namespace ScEng {

/// The file that the plug of a path attribute names; empty where it carries no path.
inline std::filesystem::path GetPath(const Node& node, const EvaluatedInputs& inputs, const AttributeRow& row) {
  const std::string written = inputs.GetText(row);
  if (written.empty()) return {};
  return MakePath(written, node.GetAttribute(std::string(row.name))->GetFolder());
}

}  // namespace ScEng
