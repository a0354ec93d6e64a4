// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "Host/Files/FileDescription.h"

/// What a file says of itself, as lines for people, each indented by two spaces.
std::string DescribeFile(const ScEng::FileDescription& file);
/// The same for programs: "format" and "parts" with their layers, channels, windows, coordinates and metadata.
nlohmann::ordered_json FileToJson(const ScEng::FileDescription& file);
