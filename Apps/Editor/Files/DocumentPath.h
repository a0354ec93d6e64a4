// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

/// A path as it is to stand in a document of a folder (empty for the working directory): relative where the file lies
/// in the folder, below it or beside it, absolute elsewhere.
std::string MakeDocumentPath(const std::filesystem::path& file, const std::filesystem::path& folder);
