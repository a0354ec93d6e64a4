// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <utility>

#include "Host/Image/Image.h"

namespace ValuePython {

/// What a caller says of an image beside its samples; nothing where it says nothing.
struct HeaderArguments {
  /// Reads what a function was given, None for nothing. TypeError for values of another kind.
  static HeaderArguments Read(const std::string& function, pybind11::handle mode, pybind11::handle pin,
                              pybind11::handle pivot, pybind11::handle range, pybind11::handle outside);

  /// Begins messages.
  std::string function;
  std::optional<std::string> mode;
  std::optional<std::pair<double, double>> pin;
  std::optional<std::pair<double, double>> pivot;
  std::optional<std::pair<double, double>> range;
  std::optional<double> outside;

  /// The mode that the word names; ValueError with the list for another word.
  [[nodiscard]] std::optional<unsigned> FindMode() const;
  /// Puts the rest into a header. ValueError for what no header holds.
  void ApplyTo(ImageHeader& header) const;
};

}  // namespace ValuePython
