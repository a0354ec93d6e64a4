// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/NodeFunction.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/ClosestName.h"
#include "Python/Module/ArrayImage.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/Catalog.h"
#include "Python/Module/Errors.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/LogBridge.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

using SharedImagePtr = std::shared_ptr<SharedImage>;

std::string Quote(const std::string& name) { return "\"" + name + "\""; }

/// The class that tells several outputs apart by the names of their plugs.
py::object MakeResultClass(const std::string& name, const std::vector<std::string>& outputs) {
  return py::module_::import("collections").attr("namedtuple")(name + "_result", outputs, py::arg("rename") = true);
}

/// The attribute that has an effect with exactly one image; nothing where there is none, or several.
std::optional<std::size_t> FindConstant(const Node& node) {
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const AttributeRow* const row = node.GetAttribute(i)->GetRow();
    if (row == nullptr || row->effect.kind != Effect::Kind::kWithImages) continue;
    if (row->kind != Attribute::Kind::kNumber || row->effect.most_images != 1 || found) return std::nullopt;
    found = i;
  }
  return found;
}

/// Whether an output can have an image without one at this input, but at those before it.
bool IsOptional(const Node& node, std::size_t input) {
  std::vector<bool> connected(node.GetNumRegularInputs(), false);
  std::fill(connected.begin(), connected.begin() + static_cast<std::ptrdiff_t>(input), true);
  return input > 0 && node.HasImage(0, connected).value_or(false);
}

}  // namespace

struct NodeFunction::Work {
  std::vector<std::vector<SharedImagePtr>> images;
  // By input: whether the caller said so, since leaving one out is easily a mistake.
  std::vector<bool> is_left_free;
  // By attribute; null for the default.
  std::vector<py::handle> attributes;

  /// Whether there are images, and none of them has a pixel: nodes that take many leave such images out.
  [[nodiscard]] bool HasNoPixels() const {
    bool has_image = false;
    for (const auto& of_input : images) {
      for (const SharedImagePtr& image : of_input) {
        if (image->GetNumSamples() > 0) return false;
        has_image = true;
      }
    }
    return has_image;
  }

  /// An output that is an input, handed on as it is, has the samples of that.
  [[nodiscard]] SharedImagePtr TakeImage(ImagePtr image, const InputImages& lent) const {
    for (std::size_t i = 0; i < lent.size(); ++i) {
      for (std::size_t k = 0; k < lent[i].size(); ++k) {
        if (lent[i][k].Get() == image.Get()) return images[i][k];
      }
    }
    return std::make_shared<SharedImage>(SharedImage::Take(std::move(image)));
  }
};

NodeFunction::NodeFunction(std::string type, std::string name, py::object result)
    : type_name_(std::move(type)), name_(std::move(name)), result_(std::move(result)) {}

void NodeFunction::Resolve() {
  const Catalog& catalog = Catalog::Get();
  if (generation_ == catalog.GetGeneration()) return;
  const NodeInterface& descriptor = catalog.Find(type_name_);
  ScEng::Status status;
  const ScEng::RefPtr<Node> node = ScEng::CreateNode(descriptor, status);
  if (!node) ThrowNodeError(status.GetMessage());
  type_ = descriptor.GetNodeType();
  inputs_.clear();
  for (std::size_t i = 0; i < node->GetNumRegularInputs(); ++i) {
    const PlugRecord& plug = node->GetInplugs()[i];
    inputs_.push_back({plug.name, plug.connections == PlugRecord::kAnyNumber, IsOptional(*node, i)});
  }
  attributes_.clear();
  for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) attributes_.push_back(node->GetAttribute(i)->GetName());
  outputs_.clear();
  for (const PlugRecord& plug : node->GetOutplugs()) outputs_.push_back(plug.name);
  constant_ = FindConstant(*node);
  if (outputs_.size() > 1 && result_.is_none()) result_ = MakeResultClass(name_, outputs_);
  generation_ = catalog.GetGeneration();
}

py::object NodeFunction::Call(const py::args& given, const py::kwargs& attributes) {
  Resolve();
  Work work;
  work.images.resize(inputs_.size());
  work.is_left_free.resize(inputs_.size());
  work.attributes.resize(attributes_.size());
  ReadImages(given, work);
  ReadKeywords(attributes, work);
  CheckInputs(work);

  ThreadNodes nodes;
  EngineNode& engine_node = nodes.Find(type_);
  Node& node = engine_node.GetNode();
  SetAttributes(node, work);
  InputImages inputs(work.images.size());
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    for (const SharedImagePtr& image : work.images[i]) inputs[i].push_back(image->Lend());
  }
  std::vector<ImagePtr> images;
  Interruption interruption;
  interruption.Run([&] { images = engine_node.Evaluate(inputs, interruption.GetCancellation()); });
  DeliverLog();
  CheckState(node, interruption);

  std::vector<py::object> outputs;
  for (unsigned i = 0; i < images.size(); ++i) {
    if (images[i]) {
      outputs.push_back(py::cast(work.TakeImage(std::move(images[i]), inputs)));
    } else {
      outputs.push_back(ToPython(node.GetOutputValue(i)));
    }
  }
  if (outputs.size() == 1 && outputs.front().is_none()) {
    ThrowNodeError(name_ + ": there is no result" + (work.HasNoPixels() ? ", as no image has any pixels" : ""));
  }
  return MakeResult(outputs);
}

SharedImagePtr NodeFunction::ReadImage(py::handle given, const std::string& name) const {
  if (py::isinstance<SharedImage>(given)) return given.cast<SharedImagePtr>();
  if (IsArrayLike(given))
    return std::make_shared<SharedImage>(MakeImage(given, std::nullopt, name_ + ": " + name + ": "));
  throw py::type_error(name_ + ": " + name + " takes an image or array, not " + NameType(given));
}

void NodeFunction::ReadImages(const py::args& images, Work& work) const {
  std::size_t input = 0;
  for (std::size_t i = 0; i < images.size(); ++i) {
    const py::handle given = images[i];
    if (input >= inputs_.size()) {
      throw py::type_error(name_ + " takes " + ListInputs() + ", and " + std::to_string(images.size()) +
                           " were given; attributes are given by name");
    }
    if (IsNumber(given)) {
      ReadConstant(given, i, work);
    } else if (given.is_none() && inputs_[input].is_optional) {
      work.is_left_free[input] = true;
    } else {
      // Of many images, which one.
      const std::string& name = inputs_[input].name;
      work.images[input].push_back(
          ReadImage(given, inputs_[input].takes_many ? name + " " + std::to_string(i + 1) : name));
    }
    if (!inputs_[input].takes_many) ++input;
  }
  if (constant_ && work.attributes[*constant_] && work.images[0].size() != 1) {
    throw py::type_error(name_ + " takes one image and a number, or images alone; with several images its attribute " +
                         Quote(attributes_[*constant_]) + " has no effect");
  }
}

void NodeFunction::ReadConstant(py::handle number, std::size_t place, Work& work) const {
  if (!constant_ && inputs_[0].takes_many) {
    const std::string text = py::repr(number).cast<std::string>();
    throw py::type_error(name_ + " takes images or arrays, not the number " + text +
                         "; an array of it does: " + "numpy.full(shape, " + text + ")");
  }
  if (!constant_) {
    throw py::type_error(name_ + " takes " + ListInputs() + " as images or arrays, not the number " +
                         py::repr(number).cast<std::string>() +
                         (attributes_.empty() ? "" : "; attributes are given by name"));
  }
  if (place == 0) {
    throw py::type_error(name_ + " takes an image or array first, and then a number, not the number " +
                         py::repr(number).cast<std::string>() + " first");
  }
  if (work.attributes[*constant_]) throw py::type_error(name_ + " takes one number, and two were given");
  work.attributes[*constant_] = number;
}

void NodeFunction::ReadNamedImage(std::size_t input, py::handle given, Work& work) const {
  if (given.is_none() && inputs_[input].is_optional) {
    work.is_left_free[input] = true;
    return;
  }
  if (!work.images[input].empty()) {
    throw py::type_error(name_ + " was given its input " + Quote(inputs_[input].name) + " twice");
  }
  work.images[input].push_back(ReadImage(given, inputs_[input].name));
}

void NodeFunction::ReadKeywords(const py::kwargs& attributes, Work& work) const {
  for (const auto& [key, value] : attributes) {
    const auto name = key.cast<std::string>();
    const auto attribute = std::find(attributes_.begin(), attributes_.end(), name);
    if (attribute != attributes_.end()) {
      py::handle& place = work.attributes[static_cast<std::size_t>(attribute - attributes_.begin())];
      if (place) throw py::type_error(name_ + " was given its attribute " + Quote(name) + " twice");
      place = value;
      continue;
    }
    const auto input = std::find_if(inputs_.begin(), inputs_.end(), [&](const Input& one) { return one.name == name; });
    if (input == inputs_.end()) {
      std::vector<std::string> names = attributes_;
      for (const Input& one : inputs_) names.push_back(one.name);
      throw py::type_error(name_ + " has no attribute " + Quote(name) + ScEng::SuggestClosestNames(name, names));
    }
    ReadNamedImage(static_cast<std::size_t>(input - inputs_.begin()), value, work);
  }
}

void NodeFunction::CheckInputs(const Work& work) const {
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    if (work.images[i].empty() && !work.is_left_free[i]) {
      throw py::type_error(name_ + " needs an image or array as " + Quote(inputs_[i].name) +
                           (inputs_[i].is_optional ? ", or None to leave it free" : ""));
    }
  }
}

void NodeFunction::SetAttributes(Node& node, const Work& work) const {
  // A value that is refused leaves the ones before it set; each call sets them all.
  for (std::size_t i = 0; i < work.attributes.size(); ++i) {
    Attribute& attribute = *node.GetAttribute(i);
    if (work.attributes[i]) {
      SetAttribute(attribute, work.attributes[i], name_);
    } else {
      attribute.ResetToDefault();
    }
  }
}

void NodeFunction::CheckState(const Node& node, const Interruption& interruption) const {
  const std::string& message = node.GetStateMessage();
  switch (node.GetState()) {
    case Node::State::kFileError: ThrowFileError(message, FindFile(node));
    case Node::State::kError: ThrowNodeError(name_ + ": " + message, interruption.FindFailure(&node));
    default: break;
  }
  if (!message.empty()) WarnLines(message);
}

py::object NodeFunction::MakeResult(const std::vector<py::object>& outputs) const {
  if (outputs.empty()) return py::none();
  if (outputs.size() > 1) {
    py::tuple values(outputs.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) values[i] = outputs[i];
    return result_(*values);
  }
  return outputs.front();
}

std::string NodeFunction::ListInputs() const {
  if (inputs_.empty()) return "no images";
  if (inputs_.front().takes_many) return "images";
  if (inputs_.size() == 1) return "one image";
  std::string names;
  for (const Input& input : inputs_) names += (names.empty() ? "" : ", ") + Quote(input.name);
  return std::to_string(inputs_.size()) + " images (" + names + ")";
}

}  // namespace ValuePython
