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
  const Attribute& attribute = *node.GetAttribute(std::string(row.name));
  const bool is_read = attribute.GetStringUse() == Attribute::StringUse::kReadPath;
  return is_read ? MakeReadPath(written, attribute.GetFolder()) : MakePath(written, attribute.GetFolder());
}

}  // namespace ScEng
