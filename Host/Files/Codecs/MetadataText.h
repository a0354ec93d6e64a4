// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "Host/Files/Api.h"
#include "Host/Image/ImageMetadata.h"

namespace ScEng {

/// A value for formats that hold nothing but texts, numbers with commas between them; nothing for a value of one
/// format.
HOST_FILES_API std::optional<std::string> ToText(const MetadataValue& value);

}  // namespace ScEng
