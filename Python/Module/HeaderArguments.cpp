// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/HeaderArguments.h"

#include <cmath>
#include <limits>
#include <vector>

#include "Host/Util/ClosestName.h"
#include "Python/Module/AttributeValue.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::string Format(double number) { return py::repr(py::float_(number)).cast<std::string>(); }

int ToPin(const std::string& function, double number) {
  const bool is_whole = number == std::floor(number);
  if (is_whole && std::abs(number) <= std::numeric_limits<int>::max()) return static_cast<int>(number);
  throw py::value_error(function + ": pin takes whole numbers of pixels, not " + Format(number));
}

float ToFloat(const std::string& function, double number, const char* name) {
  const auto narrowed = static_cast<float>(number);
  if (std::isfinite(narrowed)) return narrowed;
  throw py::value_error(function + ": " + name + " takes finite floats, not " + Format(number));
}

/// One number of an argument; `wanted` is what the argument takes.
double ReadNumber(py::handle object, const std::string& wanted) {
  if (IsNumber(object)) return ToDouble(object);
  throw py::type_error(wanted + ", not " + NameType(object));
}

std::optional<std::pair<double, double>> ReadPair(py::handle object, const std::string& wanted) {
  if (object.is_none()) return std::nullopt;
  const bool is_sequence = PySequence_Check(object.ptr()) != 0 && !py::isinstance<py::str>(object);
  if (!is_sequence) throw py::type_error(wanted + ", not " + NameType(object));
  const auto sequence = py::reinterpret_borrow<py::sequence>(object);
  if (sequence.size() != 2) throw py::value_error(wanted + ", not a sequence of " + std::to_string(sequence.size()));
  return std::pair(ReadNumber(sequence[0], wanted), ReadNumber(sequence[1], wanted));
}

}  // namespace

HeaderArguments HeaderArguments::Read(const std::string& function, py::handle mode, py::handle pin, py::handle pivot,
                                      py::handle range, py::handle outside) {
  HeaderArguments arguments;
  arguments.function = function;
  if (py::isinstance<py::str>(mode)) {
    arguments.mode = mode.cast<std::string>();
  } else if (!mode.is_none()) {
    throw py::type_error(function + ": mode takes a word, not " + NameType(mode));
  }
  arguments.pin = ReadPair(pin, function + ": pin takes two whole numbers (x, y)");
  arguments.pivot = ReadPair(pivot, function + ": pivot takes two numbers (x, y)");
  arguments.range = ReadPair(range, function + ": range takes two numbers (low, high)");
  if (!outside.is_none()) arguments.outside = ReadNumber(outside, function + ": outside takes a number");
  return arguments;
}

std::optional<unsigned> HeaderArguments::FindMode() const {
  if (!mode) return std::nullopt;
  std::vector<std::string> words;
  for (unsigned i = 0; i < ColorMode::kCount; ++i) {
    words.emplace_back(ColorMode::GetName(i));
    if (*mode == words.back()) return i;
  }
  throw py::value_error(function + ": there is no mode \"" + *mode +
                        R"("; there are "color", "signed", "value", "pair")" +
                        ScEng::SuggestClosestNames(*mode, words));
}

void HeaderArguments::ApplyTo(ImageHeader& header) const {
  if (pin) {
    header.pin_x = ToPin(function, pin->first);
    header.pin_y = ToPin(function, pin->second);
  }
  if (pivot) {
    header.pivot_x = ToFloat(function, pivot->first, "pivot");
    header.pivot_y = ToFloat(function, pivot->second, "pivot");
  }
  if (range) {
    header.value_low = ToFloat(function, range->first, "range");
    header.value_high = ToFloat(function, range->second, "range");
  }
  if (outside) header.outside_value = static_cast<float>(*outside);
}

}  // namespace ValuePython
