// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "Host/Util/Status.h"

namespace ValuePython {

// Each throws what pybind11 turns into that exception of the package; with the interpreter's lock.

[[noreturn]] void ThrowNodeError(const std::string& message);
[[noreturn]] void ThrowFileError(const std::string& message);
[[noreturn]] void ThrowValueNodesError(const std::string& message);
/// The message is the first of the problems, with the number of the others.
[[noreturn]] void ThrowDocumentError(const std::vector<std::string>& problems);
/// A run that failed. `problems` are all that there were, and `written` what was written all the same; None for
/// nothing that could be.
[[noreturn]] void ThrowRunError(bool is_of_file, const std::string& message, const std::vector<std::string>& problems,
                                const pybind11::object& written);
[[noreturn]] void ThrowOverflow(const std::string& message);

/// Issues a warning of the package for each note, at the place that called the function of the package.
void Warn(const std::vector<std::string>& notes);
/// The same for the lines of a text.
void WarnLines(const std::string& lines);

}  // namespace ValuePython
