// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/PythonNode.h"

#include <algorithm>
#include <utility>

#include "Host/Files/ImageFile.h"
#include "Host/Math/Geometry.h"
#include "Host/Util/Cancellation.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/InterpreterLock.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/ObjectOwner.h"
#include "Python/Module/PythonResult.h"
#include "Python/Module/SharedImage.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

/// Kind and message of an error, as far as the end of the line.
std::string SummarizeError(const py::list& lines) {
  std::string summary;
  for (const py::handle line : lines) {
    summary = py::str(line).attr("encode")("utf-8", "replace").cast<std::string>();
    // Errors of syntax show the place first.
    if (!summary.starts_with(' ')) break;
  }
  return summary.substr(0, summary.find('\n'));
}

/// The error in one line, and below it where it was raised, with all of its message: of a node within a node that is
/// the description of the inner one, which stands there once.
std::string DescribeError(const py::error_already_set& error) {
  const py::module_ traceback = py::module_::import("traceback");
  const auto join = [](const py::object& lines) {
    auto text = py::str("").attr("join")(lines).attr("rstrip")().attr("encode")("utf-8", "replace");
    return text.cast<std::string>();
  };
  const py::list lines = traceback.attr("format_exception_only")(error.type(), error.value());
  if (!error.trace()) return join(lines);
  const auto format = traceback.attr("format_exception");
  const bool has_causes = !py::isinstance(error.value(), py::module_::import("valuenodes").attr("NodeError"));
  return SummarizeError(lines) + "\n" +
         join(format(error.type(), error.value(), error.trace(), py::arg("chain") = has_causes));
}

py::object DecodeText(const std::string& text) {
  return py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(text.data(), static_cast<py::ssize_t>(text.size())));
}

py::object ReadText(const Attribute& attribute, const std::string& text) {
  if (text.empty() || attribute.GetStringUse() == Attribute::StringUse::kText) return DecodeText(text);
  const bool is_read = attribute.GetStringUse() == Attribute::StringUse::kReadPath;
  const auto file =
      is_read ? ScEng::MakeReadPath(text, attribute.GetFolder()) : ScEng::MakePath(text, attribute.GetFolder());
  return DecodeText(file.string());
}

/// What a plug without a value reads as, like in nodes of other libraries.
PlugValue MakeNeutral(Attribute::Kind kind) {
  switch (kind) {
    case Attribute::Kind::kFlag: return PlugValue(false);
    case Attribute::Kind::kNumber: return PlugValue(0.0);
    case Attribute::Kind::kPoint: return PlugValue(ScEng::Point{});
    case Attribute::Kind::kFrame: return PlugValue(ScEng::Frame{});
    case Attribute::Kind::kColor: return PlugValue(ScEng::Rgbo{});
    default: return PlugValue(std::string());
  }
}

}  // namespace

PythonNode::PythonNode(const PythonType& type) : type_(type) {
  Declare(type.GetRecord());
  outputs_.resize(GetOutplugs().size());
}

bool PythonNode::OnProcessEvent(NodeEvent event) {
  if (event.kind == NodeEvent::kDropCachedResults) std::fill(outputs_.begin(), outputs_.end(), ImagePtr());
  return true;
}

Image* PythonNode::GetOutputImage(unsigned outplug) const {
  return outplug < outputs_.size() ? outputs_[outplug].Get() : nullptr;
}

bool PythonNode::HasImages(const std::vector<bool>& inputs) const {
  if (!IsEnabled()) return std::find(inputs.begin(), inputs.end(), true) != inputs.end();
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (!inputs[i] && !type_.IsOptional(i)) return false;
  }
  return true;
}

PythonNode::Entries PythonNode::GatherImages(const std::vector<PlugValue>& inputs) const {
  Entries entries(GetNumRegularInputs());
  for (unsigned i = 0; i < entries.size(); ++i) {
    const std::size_t from = GetInplugIdFromRegularInputId(i);
    const std::size_t to =
        i + 1 < entries.size() ? GetInplugIdFromRegularInputId(i + 1) : inputs.size() - GetNumAttributes();
    for (std::size_t k = from; k < to; ++k) {
      if (const Image* const image = inputs[k].GetImage()) entries[i].push_back(image);
    }
  }
  return entries;
}

void PythonNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  std::fill(outputs_.begin(), outputs_.end(), ImagePtr());
  const Entries images = GatherImages(inputs);
  std::vector<bool> has_image;
  for (const auto& entry : images) has_image.push_back(!entry.empty());
  if (!HasImages(has_image)) return;
  if (!IsEnabled()) {
    const auto first = std::find_if(images.begin(), images.end(), [](const auto& entry) { return !entry.empty(); });
    for (ImagePtr& output : outputs_) output.Reset(const_cast<Image*>(first->front()));
    return;
  }
  const WithLock lock;
  try {
    Call(images, inputs);
  } catch (py::error_already_set& error) {
    Interruption* const interruption = Interruption::GetCurrent();
    // Ctrl-C and the like are no fault of the node.
    if (interruption != nullptr && !error.matches(PyExc_Exception)) {
      interruption->Stop(std::move(error));
      throw ScEng::Canceled();
    }
    Fail(evaluation, DescribeError(error), error);
  } catch (const py::builtin_exception& error) {
    error.set_error();
    Fail(evaluation, error.what(), py::error_already_set());
  }
}

void PythonNode::Fail(unsigned evaluation, const std::string& message, const py::error_already_set& error) {
  std::fill(outputs_.begin(), outputs_.end(), ImagePtr());
  SetState(evaluation, State::kError, message);
  Interruption* const interruption = Interruption::GetCurrent();
  if (interruption == nullptr) return;
  if (error.trace()) PyException_SetTraceback(error.value().ptr(), error.trace().ptr());
  interruption->RememberFailure(this, error.value());
}

py::handle PythonNode::GetObject() {
  if (!object_) object_ = KeepObject(type_.GetClass()());
  return {static_cast<PyObject*>(const_cast<void*>(object_.get()))};
}

void PythonNode::Call(const Entries& images, const std::vector<PlugValue>& inputs) {
  const py::object evaluate = GetObject().attr("evaluate");
  const Image* like = nullptr;
  for (const auto& entry : images) {
    if (like == nullptr && !entry.empty()) like = entry.front();
  }
  TakeResults(evaluate(*MakeArguments(images), **MakeKeywords(inputs)), like);
}

py::tuple PythonNode::MakeArguments(const Entries& images) const {
  py::tuple arguments(images.size());
  for (std::size_t i = 0; i < images.size(); ++i) {
    py::list entries;
    for (const Image* const image : images[i]) {
      // Whoever keeps the array keeps the samples, whatever becomes of the image.
      py::object shared = py::cast(std::make_shared<SharedImage>(SharedImage::Keep(*image)));
      entries.append(type_.TakesImages() ? shared : shared.attr("__array__")());
    }
    if (GetInplugs()[i].connections == PlugRecord::kAnyNumber) {
      arguments[i] = entries;
    } else {
      arguments[i] = entries.empty() ? py::none() : py::object(entries[0]);
    }
  }
  return arguments;
}

py::dict PythonNode::MakeKeywords(const std::vector<PlugValue>& inputs) const {
  py::dict keywords;
  for (unsigned i = 0; i < GetNumAttributes(); ++i) {
    const Attribute& attribute = *GetAttribute(i);
    const PlugValue& carried = inputs[GetInplugIdFromAttributeId(i)];
    const PlugValue value = carried.HasValue() ? carried : MakeNeutral(attribute.GetKind());
    py::object object;
    if (value.GetType() == PlugType::kText) {
      object = ReadText(attribute, value.GetText());
    } else if (attribute.GetKind() == Attribute::Kind::kNumber && attribute.GetDecimals() == 0) {
      object = py::int_(ScEng::RoundHalfDown(value.GetNumber()));
    } else {
      object = ToPython(value);
    }
    keywords[py::str(attribute.GetName())] = object;
  }
  return keywords;
}

void PythonNode::TakeResults(py::object results, const Image* like) {
  std::vector<py::object> returned;
  if (outputs_.size() == 1) {
    returned.push_back(std::move(results));
  } else {
    const bool is_list = py::isinstance<py::tuple>(results) || py::isinstance<py::list>(results);
    if (!is_list || py::len(results) != outputs_.size()) {
      throw py::value_error("evaluate returns a tuple of " + std::to_string(outputs_.size()) +
                            " arrays or images, one for each output, not " +
                            (is_list ? std::to_string(py::len(results)) : NameType(results)));
    }
    for (const py::handle entry : results) returned.push_back(py::reinterpret_borrow<py::object>(entry));
    results = py::object();
  }
  for (std::size_t i = 0; i < outputs_.size(); ++i) {
    outputs_[i] = TakeResult(std::move(returned[i]), GetOutplugs()[i].name, like);
  }
}

}  // namespace ValuePython
