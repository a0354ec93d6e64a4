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
