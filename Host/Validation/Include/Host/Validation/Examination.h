// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Util/Status.h"
#include "Host/Validation/Api.h"

namespace ScEng {

struct ExaminationOptions {
  std::filesystem::path library;
  /// As in `ValidationOptions`; empty for the program that comes with the host.
  std::vector<std::string> child_command;
  /// How long all of it may take.
  std::chrono::milliseconds timeout{10000};
};

/// Looks whether a program can load a node library without coming to harm, in less time than `ValidateLibrary` takes.
///
/// A child process loads it, reads its catalogue, makes a node of each type, lets everything go and ends. An error, one
/// line that names the file, where the library cannot be loaded or breaks the rules of its catalogue, crashes, hangs,
/// ends the process, prints to standard output, or changes what all parts of a process share: the floating-point mode,
/// descriptors, the working directory, handlers of signals, the locale, the mask of new files.
///
/// Throws `Canceled` where the evaluation that this thread works for is asked to stop.
HOST_VALIDATION_API Status ExamineLibrary(const ExaminationOptions& options);

}  // namespace ScEng
