// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "Host/Util/Status.h"

namespace ValuePython {

// Each throws what pybind11 turns into that exception of the package; with the interpreter's lock.

/// The file that an error is about, as the caller has named it; none where the path is empty.
struct FailedFile {
  std::string path;
  bool is_written = false;
};

/// `cause` is the exception of Python that stands behind it; null for none.
[[noreturn]] void ThrowNodeError(const std::string& message, const pybind11::object& cause = {});
[[noreturn]] void ThrowFileError(const std::string& message, const FailedFile& file);
[[noreturn]] void ThrowValueNodesError(const std::string& message);
/// The message is the first of the problems, with the number of the others.
[[noreturn]] void ThrowDocumentError(const std::vector<std::string>& problems);

/// An evaluation of a graph that failed.
struct FailedRun {
  /// What is told of first; the others are counted.
  std::string message;
  std::vector<std::string> problems;
  /// Whether it is a file that failed, and which.
  bool is_of_file = false;
  FailedFile file;
  /// The exception of Python behind what is told of first; null for none.
  pybind11::object cause;
  /// What was written all the same; None for nothing that could be.
  pybind11::object written;
};
[[noreturn]] void ThrowRunError(const FailedRun& run);
[[noreturn]] void ThrowOverflow(const std::string& message);

/// Issues a warning of the package for each note, at the place that called the function of the package.
void Warn(const std::vector<std::string>& notes);
/// The same for the lines of a text.
void WarnLines(const std::string& lines);

}  // namespace ValuePython
