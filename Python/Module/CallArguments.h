// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <string>
#include <vector>

namespace ValuePython {

/// What a function was called with, told apart by the names of its arguments. Throws TypeError, which names the
/// function and what would be right, for arguments that it does not take.
class CallArguments {
 public:
  /// The first `most_by_place` may be given without their names. Lasts no longer than what was given.
  CallArguments(std::string function, std::vector<std::string> names, std::size_t most_by_place,
                const pybind11::args& given, const pybind11::kwargs& given_by_name);

  /// What was given for an argument; None for nothing.
  pybind11::handle operator[](std::size_t place) const {
    return values_[place] ? values_[place] : pybind11::handle(Py_None);
  }
  [[nodiscard]] bool Has(std::size_t place) const { return static_cast<bool>(values_[place]); }

 private:
  std::vector<pybind11::handle> values_;
};

}  // namespace ValuePython
