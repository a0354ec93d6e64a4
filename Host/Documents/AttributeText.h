// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Host/Documents/JsonValue.h"
#include "Host/Tools/Attribute.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// Sets an attribute from a JSON value of the attribute's kind. The error says what is wrong with the value and what
/// would be right, without naming the attribute; so does a note that a number was clamped.
Status SetAttributeFromJson(Attribute& attribute, const JsonValue& value, std::vector<std::string>& notes);

/// The same from text as it is written on a command line.
Status SetAttributeFromText(Attribute& attribute, const std::string& text, std::vector<std::string>& notes);

/// The same from a value as plugs carry it. An error for what a document cannot hold.
Status SetAttributeFromValue(Attribute& attribute, const PlugValue& value, std::vector<std::string>& notes);

/// The value of an attribute as JSON; an error, without the attribute's name, where JSON cannot hold it.
Status GetAttributeAsJson(const Attribute& attribute, JsonValue& value);

/// The numbers of a list; nothing for any other value.
std::optional<std::vector<double>> ReadNumbers(const JsonValue& value);

}  // namespace ScEng
