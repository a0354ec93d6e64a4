// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "Host/Tools/Attribute.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// Sets an attribute from a JSON value of the attribute's kind. The error says what is wrong with the value and what
/// would be right, without naming the attribute; so does a note that a number was clamped.
Status SetAttributeFromJson(Attribute& attribute, const nlohmann::json& value, std::vector<std::string>& notes);

/// The same from text as it is written on a command line.
Status SetAttributeFromText(Attribute& attribute, const std::string& text, std::vector<std::string>& notes);

/// "constant, image" : a list for messages.
std::string JoinNames(const std::vector<std::string>& names);

}  // namespace ScEng
