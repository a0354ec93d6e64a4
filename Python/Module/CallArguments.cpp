// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/CallArguments.h"

#include <algorithm>

#include "Host/Util/ClosestName.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::string Join(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

CallArguments::CallArguments(std::string function, std::vector<std::string> names, std::size_t most_by_place,
                             const py::args& given, const py::kwargs& given_by_name)
    : values_(names.size()) {
  if (given.size() > most_by_place) {
    throw py::type_error(most_by_place == 0
                             ? function + " takes its arguments by name, which are " + Join(names)
                             : function + " takes at most " + std::to_string(most_by_place) +
                                   (most_by_place == 1 ? " argument" : " arguments") + " without their names, and " +
                                   std::to_string(given.size()) + " were given; it takes " + Join(names));
  }
  for (std::size_t i = 0; i < given.size(); ++i) values_[i] = given[i];
  for (const auto& [key, value] : given_by_name) {
    const auto name = key.cast<std::string>();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
      const std::string closest = ScEng::SuggestClosestNames(name, names);
      throw py::type_error(function + " has no argument \"" + name + "\"" +
                           (closest.empty() ? "; it takes " + Join(names) : closest));
    }
    py::handle& place = values_[static_cast<std::size_t>(found - names.begin())];
    if (place) throw py::type_error(function + " was given its argument \"" + name + "\" twice");
    place = value;
  }
}

}  // namespace ValuePython
