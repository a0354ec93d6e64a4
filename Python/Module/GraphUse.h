// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Python/Module/GraphObject.h"
#include "Python/Module/Interruption.h"

namespace ValuePython {

/// One call that uses a graph. RuntimeError where another one is under way.
class GraphObject::Use {
 public:
  explicit Use(GraphObject& graph);
  ~Use() { graph_.is_used_ = false; }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

 private:
  GraphObject& graph_;
};

/// A ValueError where the document has refused something.
void Require(const ScEng::Status& status);
/// The problems of a document, with a hint where a node type is unknown that may be a class of Python.
std::vector<std::string> HintAtClasses(std::vector<std::string> problems);
/// A name as messages show it.
std::string Quote(const std::string& name);

/// What tells a function of Python, or nobody for None, how far an evaluation is; an exception of it stops the
/// evaluation. Both outlive what this answers.
std::function<void(Node& node, std::size_t done, std::size_t total)> TellProgress(const pybind11::object& function,
                                                                                  Interruption& interruption);

}  // namespace ValuePython
