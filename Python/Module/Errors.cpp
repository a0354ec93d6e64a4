// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Errors.h"

#include <pybind11/pybind11.h>

#include <sstream>

namespace py = pybind11;

namespace ValuePython {
namespace {

py::object FindClass(const char* name) { return py::module_::import("valuenodes._errors").attr(name); }

[[noreturn]] void Throw(const char* name, const std::string& message) {
  PyErr_SetString(FindClass(name).ptr(), message.c_str());
  throw py::error_already_set();
}

}  // namespace

void ThrowNodeError(const std::string& message) { Throw("NodeError", message); }
void ThrowFileError(const std::string& message) { Throw("FileError", message); }
void ThrowValueNodesError(const std::string& message) { Throw("ValueNodesError", message); }

void ThrowOverflow(const std::string& message) {
  PyErr_SetString(PyExc_OverflowError, message.c_str());
  throw py::error_already_set();
}

void Warn(const std::vector<std::string>& notes) {
  // One frame up from the function of the package that called this.
  constexpr int kCaller = 2;
  for (const std::string& note : notes) {
    if (PyErr_WarnEx(FindClass("ValueNodesWarning").ptr(), note.c_str(), kCaller) != 0) throw py::error_already_set();
  }
}

void WarnLines(const std::string& lines) {
  std::vector<std::string> notes;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) notes.push_back(line);
  Warn(notes);
}

}  // namespace ValuePython
