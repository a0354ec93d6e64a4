// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <string>

namespace ScEng {

/// The sentence that the page of a node type says first of an attribute; empty where there is none. The sentences are
/// read from the file attribute_texts.json, which lies where this library's own place leads to.
[[nodiscard]] QString FindAttributeText(const std::string& type_name, const std::string& attribute);

}  // namespace ScEng
