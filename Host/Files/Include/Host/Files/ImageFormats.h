// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/Api.h"

namespace ScEng {

/// Loads the modules that write files of these names now, and not with the first of them. Libraries behind them start
/// threads when they are loaded, and end the process where the system has no more: a program that starts many threads
/// of its own calls this before. A module that cannot be loaded is an error of whoever writes a file.
HOST_FILES_API void LoadFormatsToWrite(const std::vector<std::filesystem::path>& files);

/// Why no image can be written to a file of this name, as far as its ending tells, with what would be right: a clause
/// without the name of the file. Empty where one can.
HOST_FILES_API std::string FindEndingProblem(const std::filesystem::path& file);

/// Why the samples of a file of this name cannot be packed as `WriteOptions::compression` asks, with the words that its
/// format takes: a clause as above. Empty where they can, and for an ending of no format. Loads what writes the file;
/// where that cannot be loaded, nothing is told before the file is written.
HOST_FILES_API std::string FindCompressionProblem(const std::filesystem::path& file, const std::string& compression);

/// Whether a file's name has the ending of an image format that is read or written, in any case of letters.
HOST_FILES_API bool HasImageEnding(const std::filesystem::path& file);

/// The endings of all formats that are written, with their dots.
HOST_FILES_API std::vector<std::string> ListWrittenEndings();

}  // namespace ScEng
