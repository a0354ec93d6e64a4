// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "Apps/Value/Reporter.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Status.h"

/// What stands for standard input, or output, in the place of a file.
inline constexpr const char* kStandardStream = "-";

/// Standard input in the place of a file. It can be taken once, as one image or as the document; a second time is an
/// error. Nothing here is for several threads but `LoadDocument` of a document that has been loaded before.
class StandardInput {
 public:
  /// The path to read an image from that was written as `written`: that of standard input where it was "-", else
  /// `written` as a path. Standard input is read to its end and from then on is a file in memory, since formats are not
  /// read from their beginning to their end.
  static ScEng::Status FindImage(const std::string& written, std::filesystem::path& path);

  /// What an error of `FindImage` means: that it cannot be read, or that it was asked for in a wrong way.
  static ExitCode GetErrorCode();

  /// Loads a document from a file, or from standard input for "-"; its relative paths then start from the working
  /// directory. False, with one error in `findings`, where it cannot be read. Where `text` is not null and empty, it
  /// receives what was read; where it is not empty, it is the document, whatever the file holds by now.
  static bool LoadDocument(ScEng::GraphDocument& document, const std::string& written, ScEng::Findings& findings,
                           std::string* text = nullptr);

  /// What messages call a document that was written like this.
  static std::string GetDocumentName(const std::string& written);
};
