// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <algorithm>
#include <sstream>

#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/Bindings.h"
#include "Python/Module/Catalog.h"
#include "Python/Module/Errors.h"
#include "Python/Module/NodeFunction.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

py::list SplitWords(const std::string& words) {
  py::list list;
  std::istringstream stream(words);
  for (std::string word; std::getline(stream, word, ',');) list.append(word);
  return list;
}

py::dict DescribeAttribute(const Attribute& attribute) {
  py::dict facts;
  facts["name"] = attribute.GetName();
  facts["kind"] = attribute.GetKindName();
  facts["default"] = ToPython(attribute.GetDefault());
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    facts["lowest"] = attribute.GetLowest();
    facts["highest"] = attribute.GetHighest();
    facts["decimals"] = attribute.GetDecimals();
  }
  if (attribute.GetKind() == Attribute::Kind::kChoice) facts["words"] = attribute.GetChoices();
  facts["is_path"] = attribute.GetStringUse() != Attribute::StringUse::kText;
  if (const AttributeRow* const row = attribute.GetRow()) {
    facts["text"] = row->text;
    facts["unit"] = row->unit;
    facts["is_constant"] = row->effect.kind == Effect::Kind::kWithImages && row->effect.most_images == 1;
  }
  return facts;
}

py::list DescribeInputs(const Node& node) {
  py::list inputs;
  std::vector<bool> connected(node.GetNumRegularInputs(), false);
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) {
    const PlugRecord& plug = node.GetInplugs()[i];
    py::dict input;
    input["name"] = plug.name;
    input["takes_many"] = plug.connections == PlugRecord::kAnyNumber;
    input["is_optional"] = i > 0 && node.HasImage(0, connected).value_or(false);
    inputs.append(input);
    connected[i] = true;
  }
  return inputs;
}

py::dict DescribeNode(const NodeInterface& descriptor) {
  ScEng::Status status;
  const ScEng::RefPtr<Node> node = ScEng::CreateNode(descriptor, status);
  if (!node) ThrowNodeError(status.GetMessage());
  py::dict facts;
  const auto numbers = descriptor.GetNodeType().GetNumbers();
  facts["class"] = descriptor.GetNodeFactory()->GetTypeName();
  facts["name"] = descriptor.GetName();
  facts["type"] = py::make_tuple(numbers[0], numbers[1], numbers[2]);
  facts["library"] = descriptor.GetLibraryName();
  if (const NodeRecord* const record = node->GetRecord()) {
    facts["group"] = record->group;
    facts["sentence"] = record->sentence;
    facts["keywords"] = SplitWords(record->keywords);
  }
  facts["inputs"] = DescribeInputs(*node);
  py::list outputs;
  for (unsigned i = 0; i < node->GetOutplugs().size(); ++i) {
    py::dict output;
    output["name"] = node->GetOutplugs()[i].name;
    output["alias"] = node->GetOutplugAlias(i);
    output["kind"] = PlugType::GetName(node->GetOutplugs()[i].type);
    outputs.append(output);
  }
  facts["outputs"] = outputs;
  py::list attributes;
  for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) {
    attributes.append(DescribeAttribute(*node->GetAttribute(i)));
  }
  facts["attributes"] = attributes;
  return facts;
}

}  // namespace

void BindNodes(py::module_& module) {
  py::class_<NodeFunction>(module, "NodeFunction")
      .def(py::init<std::string, std::string, py::object>(), py::arg("type"), py::arg("name"),
           py::arg("result") = py::none())
      .def("__call__", &NodeFunction::Call);
  module.def("describe_node", [](const std::string& type) { return DescribeNode(Catalog::Get().Find(type)); });
  module.def("list_nodes", [] {
    std::vector<std::string> names;
    for (const NodeInterface* const descriptor : Catalog::Get().GetTypes()->GetDescriptors()) {
      names.push_back(descriptor->GetNodeFactory()->GetTypeName());
    }
    return names;
  });
  module.def(
      "load_library", [](const std::filesystem::path& file, bool is_trusted) { Catalog::Get().Load(file, is_trusted); },
      py::arg("path"), py::arg("trust"));
}

}  // namespace ValuePython
