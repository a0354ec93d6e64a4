// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>

#include "Python/Module/Bindings.h"
#include "Python/Module/GraphObject.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

void AddOutput(GraphObject& self, const std::string& from, const std::string& path, const std::string& type,
               const std::string& samples, const std::string& opacity, const std::string& metadata,
               const std::string& layer) {
  self.AddOutput({from, path, type, samples, opacity, metadata, layer});
}

py::list ListConnections(GraphObject& self) {
  py::list list;
  for (const ScEng::DocumentConnection& connection : self.ListConnections()) {
    list.append(py::make_tuple(connection.from, connection.to, connection.index));
  }
  return list;
}

py::list ListOutputs(GraphObject& self) {
  py::list list;
  for (const ScEng::DocumentOutput& output : self.ListOutputs()) {
    list.append(py::make_tuple(output.from, output.path, output.type, output.samples, output.opacity, output.metadata,
                               output.layer));
  }
  return list;
}

}  // namespace

void BindGraphs(py::module_& module) {
  py::class_<GraphObject>(module, "Document")
      .def(py::init<>())
      .def_static("load", &GraphObject::Load)
      .def_static("from_text", &GraphObject::FromText)
      .def("save", &GraphObject::Save)
      .def("write", &GraphObject::Write)
      .def("folder", &GraphObject::GetFolder)
      .def("add", &GraphObject::Add)
      .def("remove", &GraphObject::Remove)
      .def("rename", &GraphObject::Rename)
      .def("set_enabled", &GraphObject::SetEnabled)
      .def("is_enabled", &GraphObject::IsEnabled)
      .def("nodes", &GraphObject::ListNodes)
      .def("connect", &GraphObject::Connect)
      .def("disconnect", &GraphObject::Disconnect)
      .def("connections", &ListConnections)
      .def("set", &GraphObject::Set)
      .def("get", &GraphObject::Get)
      .def("add_output", &AddOutput)
      .def("remove_outputs", &GraphObject::RemoveOutputs)
      .def("outputs", &ListOutputs)
      .def("check",
           [](GraphObject& self) {
             const ScEng::Findings findings = self.Check();
             return py::make_tuple(findings.errors, findings.notes);
           })
      .def("evaluate", &GraphObject::Evaluate)
      .def("run", &GraphObject::Run)
      .def("to_svg", &GraphObject::DrawSvg)
      .def("describe", &GraphObject::Describe);
}

}  // namespace ValuePython
