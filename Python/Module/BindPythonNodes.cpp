// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Bindings.h"
#include "Python/Module/Catalog.h"
#include "Python/Module/PythonType.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

void Register(const py::object& node_class, const py::dict& description, bool replaces) {
  // Never destroyed: descriptors and nodes of any thread may point to it.
  const auto* const type = new PythonType(node_class, description);
  Catalog::Get().Register(MakeDescriptor(*type), replaces);
}

}  // namespace

void BindPythonNodes(py::module_& module) { module.def("register_class", &Register); }

}  // namespace ValuePython
