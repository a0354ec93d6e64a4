// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/AttributeValue.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>
#include <system_error>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Host/Util/ClosestName.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::string FormatNumber(double number) { return py::repr(py::float_(number)).cast<std::string>(); }

std::string JoinWords(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "\"" : ", \"") + word + "\"";
  return text;
}

/// "add: constant", which messages begin with.
std::string NameOf(const Attribute& attribute, const std::string& function) {
  return function + ": " + attribute.GetName();
}

[[noreturn]] void ThrowKind(const Attribute& attribute, const char* wanted, py::handle value,
                            const std::string& function) {
  throw py::type_error(NameOf(attribute, function) + " takes " + wanted + ", not " + NameType(value));
}

void SetNumber(Attribute& attribute, py::handle value, const std::string& function) {
  if (!IsNumber(value)) ThrowKind(attribute, "a number", value, function);
  const double number = ToDouble(value);
  if (!(number >= attribute.GetLowest() && number <= attribute.GetHighest())) {
    throw py::value_error(NameOf(attribute, function) + " takes numbers from " + FormatNumber(attribute.GetLowest()) +
                          " to " + FormatNumber(attribute.GetHighest()) + ", not " + FormatNumber(number));
  }
  attribute.SetNumber(number, false);
}

void SetFlag(Attribute& attribute, py::handle value, const std::string& function) {
  // numpy has a truth value of its own, named differently before its version 2.
  const std::string type = NameType(value);
  const bool is_flag = PyBool_Check(value.ptr()) != 0 || type == "numpy.bool_" || type == "numpy.bool";
  if (!is_flag) ThrowKind(attribute, "True or False", value, function);
  attribute.SetFlag(PyObject_IsTrue(value.ptr()) != 0, false);
}

/// The word of a choice that says this number, where its words are numbers.
std::optional<std::string> FindWord(const Attribute& attribute, double number) {
  for (const std::string& word : attribute.GetChoices()) {
    double said = 0.0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), said);
    if (error == std::errc() && end == word.data() + word.size() && said == number) return word;
  }
  return std::nullopt;
}

void SetChoice(Attribute& attribute, py::handle value, const std::string& function) {
  std::string word;
  if (py::isinstance<py::str>(value)) {
    word = value.cast<std::string>();
  } else if (IsNumber(value)) {
    word = FindWord(attribute, ToDouble(value)).value_or(py::repr(value).cast<std::string>());
  } else {
    ThrowKind(attribute, ("one of the words " + JoinWords(attribute.GetChoices())).c_str(), value, function);
  }
  if (attribute.SetChoice(word, false)) return;
  throw py::value_error(NameOf(attribute, function) + " has no word \"" + word + "\"; it takes " +
                        JoinWords(attribute.GetChoices()) + ScEng::SuggestClosestNames(word, attribute.GetChoices()));
}

void SetString(Attribute& attribute, py::handle value, const std::string& function) {
  auto text = py::reinterpret_borrow<py::object>(value);
  const bool is_path = attribute.GetStringUse() != Attribute::StringUse::kText;
  if (is_path && py::hasattr(value, "__fspath__")) text = py::module_::import("os").attr("fspath")(value);
  if (!py::isinstance<py::str>(text)) ThrowKind(attribute, is_path ? "a path" : "a string", value, function);
  // Names of files may hold bytes that are no text, which Python keeps as surrogates.
  const py::object bytes = is_path ? py::module_::import("os").attr("fsencode")(text) : text;
  attribute.SetString(bytes.cast<std::string>(), false);
}

std::vector<double> ReadNumbers(const Attribute& attribute, py::handle value, std::size_t count, const char* names,
                                const std::string& function) {
  const std::string wanted = std::to_string(count) + " numbers " + names;
  if (PySequence_Check(value.ptr()) == 0 || py::isinstance<py::str>(value)) {
    ThrowKind(attribute, wanted.c_str(), value, function);
  }
  const auto sequence = py::reinterpret_borrow<py::sequence>(value);
  if (sequence.size() != count) {
    throw py::value_error(NameOf(attribute, function) + " takes " + wanted + ", not " +
                          std::to_string(sequence.size()));
  }
  std::vector<double> numbers;
  // Owned: a sequence may make its entries when it is asked for them, as arrays do.
  for (const py::object entry : sequence) {
    if (!IsNumber(entry)) ThrowKind(attribute, wanted.c_str(), entry, function);
    numbers.push_back(ToDouble(entry));
    if (std::isnan(numbers.back())) {
      throw py::value_error(NameOf(attribute, function) + " takes " + wanted + ", and NaN is none");
    }
  }
  return numbers;
}

}  // namespace

bool IsNumber(py::handle object) {
  if (PyFloat_Check(object.ptr()) != 0 || PyLong_Check(object.ptr()) != 0) return true;
  if (py::isinstance<py::str>(object) || !py::hasattr(object, "__float__")) return false;
  return !py::hasattr(object, "ndim") || object.attr("ndim").cast<int>() == 0;
}

double ToDouble(py::handle object) {
  const double number = PyFloat_AsDouble(object.ptr());
  if (number != -1.0 || PyErr_Occurred() == nullptr) return number;
  if (PyErr_ExceptionMatches(PyExc_OverflowError) == 0) throw py::error_already_set();
  PyErr_Clear();
  const double infinity = std::numeric_limits<double>::infinity();
  return object < py::int_(0) ? -infinity : infinity;
}

std::string NameType(py::handle object) { return Py_TYPE(object.ptr())->tp_name; }

void SetAttribute(Attribute& attribute, py::handle value, const std::string& function) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kNumber: SetNumber(attribute, value, function); return;
    case Attribute::Kind::kFlag: SetFlag(attribute, value, function); return;
    case Attribute::Kind::kChoice: SetChoice(attribute, value, function); return;
    case Attribute::Kind::kString: SetString(attribute, value, function); return;
    case Attribute::Kind::kPoint: {
      const auto point = ReadNumbers(attribute, value, 2, "(x, y)", function);
      attribute.SetPoint(point[0], point[1], false);
      return;
    }
    case Attribute::Kind::kFrame: {
      const auto frame = ReadNumbers(attribute, value, 4, "(x, y, width, height)", function);
      attribute.SetFrame(frame[0], frame[1], frame[2], frame[3], false);
      return;
    }
    case Attribute::Kind::kColor: break;
  }
  const auto color = ReadNumbers(attribute, value, 4, "(red, green, blue, opacity)", function);
  attribute.SetRgbo(color[0], color[1], color[2], color[3], false);
}

FailedFile FindFile(const Node& node) {
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    const bool is_path =
        attribute.GetKind() == Attribute::Kind::kString && attribute.GetStringUse() != Attribute::StringUse::kText;
    if (!is_path) continue;
    const bool is_written = attribute.GetStringUse() == Attribute::StringUse::kWritePath;
    const std::string text = attribute.GetValue().GetText();
    const std::filesystem::path file =
        is_written ? ScEng::MakePath(text, attribute.GetFolder()) : ScEng::MakeReadPath(text, attribute.GetFolder());
    const bool is_named = node.GetStateMessage().find(file.filename().string()) != std::string::npos;
    if (!text.empty() && is_named) return {file.string(), is_written};
  }
  return {};
}

py::object ToPython(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return py::bool_(value.GetFlag());
    case PlugType::kNumber: return py::float_(value.GetNumber());
    case PlugType::kText: return py::str(value.GetText());
    case PlugType::kPoint: return py::make_tuple(value.GetPoint().x, value.GetPoint().y);
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return py::make_tuple(frame.x, frame.y, frame.width, frame.height);
    }
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return py::make_tuple(color.red, color.green, color.blue, color.opacity);
    }
    default: return py::none();
  }
}

}  // namespace ValuePython
