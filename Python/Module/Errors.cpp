// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Errors.h"

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <sstream>

namespace py = pybind11;

namespace ValuePython {
namespace {

py::object FindClass(const char* name) { return py::module_::import("valuenodes._errors").attr(name); }

py::str Decode(const std::string& text) {
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "replace"));
}

[[noreturn]] void Raise(const py::object& error, const py::object& cause = {}) {
  if (cause) PyException_SetCause(error.ptr(), py::object(cause).release().ptr());
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
  throw py::error_already_set();
}

/// A file error; of a missing or forbidden file it is of a class that says so.
py::object MakeFileError(const std::string& message, const py::object& problems, const FailedFile& file) {
  return FindClass("make_file_error")(Decode(message), problems, py::bytes(file.path), file.is_written);
}

/// The first problem, with the number of the others at the end of its first line.
std::string CountOthers(std::string first, std::size_t problems) {
  if (problems < 2) return first;
  const std::string others =
      " (and " + std::to_string(problems - 1) + (problems == 2 ? " more problem)" : " more problems)");
  return first.insert(std::min(first.find('\n'), first.size()), others);
}

}  // namespace

void ThrowNodeError(const std::string& message, const py::object& cause) {
  Raise(FindClass("NodeError")(Decode(message)), cause);
}

void ThrowFileError(const std::string& message, const FailedFile& file) {
  Raise(MakeFileError(message, py::none(), file));
}

void ThrowValueNodesError(const std::string& message) { Raise(FindClass("ValueNodesError")(Decode(message))); }

void ThrowDocumentError(const std::vector<std::string>& problems) {
  Raise(FindClass("DocumentError")(CountOthers(problems.front(), problems.size()), problems));
}

void ThrowRunError(const FailedRun& run) {
  const std::string message = CountOthers(run.message, run.problems.size());
  const py::tuple problems(py::cast(run.problems));
  const py::object error =
      run.is_of_file ? MakeFileError(message, problems, run.file) : FindClass("NodeError")(Decode(message), problems);
  if (!run.written.is_none()) error.attr("written") = py::tuple(run.written);
  Raise(error, run.cause);
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
