// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/GraphUse.h"

#include <stdexcept>
#include <utility>

#include "Python/Module/InterpreterLock.h"

namespace py = pybind11;

namespace ValuePython {

GraphObject::Use::Use(GraphObject& graph) : graph_(graph) {
  if (graph.is_used_) {
    throw std::runtime_error(
        "the graph is in use by another call; wait until that returns, or use a copy of the graph");
  }
  graph.is_used_ = true;
  try {
    graph.FollowCatalog();
  } catch (...) {
    graph.is_used_ = false;
    throw;
  }
}

void Require(const ScEng::Status& status) {
  if (status.IsError()) throw py::value_error(status.GetMessage());
}

std::vector<std::string> HintAtClasses(std::vector<std::string> problems) {
  for (std::string& problem : problems) {
    const bool is_unknown = problem.find(": there is no node type \"") != std::string::npos &&
                            problem.find("; the closest ") == std::string::npos;
    if (is_unknown) problem += "; a class of Python is made one by valuenodes.register, before the document is loaded";
  }
  return problems;
}

std::string Quote(const std::string& name) { return "\"" + ScEng::MakeLine(name, 80) + "\""; }

std::function<void(Node& node, std::size_t done, std::size_t total)> TellProgress(const py::object& function,
                                                                                  Interruption& interruption) {
  if (function.is_none()) return nullptr;
  return [&](Node& node, std::size_t done, std::size_t total) {
    const WithLock lock;
    try {
      function(node.GetLabel(), done, total);
    } catch (py::error_already_set& error) {
      interruption.Stop(std::move(error));
    }
  };
}

}  // namespace ValuePython
