// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Files/FileDescription.h"

namespace ScEng {

/// The layers of a part in the order of the file: "diffuse" where it has a channel "diffuse.R". Channels without a
/// layer are not counted.
HOST_FILES_API std::vector<std::string> ListLayers(const FilePart& part);

}  // namespace ScEng
