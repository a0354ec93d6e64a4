// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Errors.h"

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

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

void ThrowDocumentError(const std::vector<std::string>& problems) {
  std::string message = problems.front();
  if (problems.size() > 1)
    message +=
        " (and " + std::to_string(problems.size() - 1) + (problems.size() == 2 ? " more problem)" : " more problems)");
  const py::object error_class = FindClass("DocumentError");
  PyErr_SetObject(error_class.ptr(), error_class(message, problems).ptr());
  throw py::error_already_set();
}

void ThrowRunError(bool is_of_file, const std::string& message, const std::vector<std::string>& problems,
                   const py::object& written) {
  const py::object error_class = FindClass(is_of_file ? "FileError" : "NodeError");
  const auto text = py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(message.data(), static_cast<py::ssize_t>(message.size()), "replace"));
  py::object error = error_class(text);
  error.attr("problems") = py::tuple(py::cast(problems));
  if (!written.is_none()) error.attr("written") = py::tuple(written);
  PyErr_SetObject(error_class.ptr(), error.ptr());
  throw py::error_already_set();
}

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
