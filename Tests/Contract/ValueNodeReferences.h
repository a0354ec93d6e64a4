// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/PlugValue.h"

namespace Testing {

/// What the plugs of a node's attributes carry, by name.
using AttributeValues = std::map<std::string, PlugValue>;

/// The samples of an output as the node's definition gives them, in plain loops that share no code with the node's fast
/// ones. Only for inputs whose boxes are equal. Nothing for a node type that has its reference elsewhere, and an empty
/// vector where the node has no output.
std::optional<std::vector<float>> GetExpectedSamples(const std::string& type_name, unsigned output,
                                                     const std::vector<const Image*>& images,
                                                     const AttributeValues& attributes);

}  // namespace Testing
