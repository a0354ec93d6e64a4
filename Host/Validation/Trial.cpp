// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Trial.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <exception>
#include <iterator>
#include <limits>
#include <new>
#include <random>
#include <stdexcept>

#include "Host/Image/Oversize.h"
#include "Host/Validation/Checks.h"

namespace ScEng {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

constexpr float kAwkward[] = {kNan,
                              -kNan,
                              kInfinity,
                              -kInfinity,
                              0.0F,
                              -0.0F,
                              std::numeric_limits<float>::denorm_min(),
                              -std::numeric_limits<float>::denorm_min(),
                              std::numeric_limits<float>::min() / 2.0F,
                              std::numeric_limits<float>::max(),
                              -std::numeric_limits<float>::max(),
                              1.0F};

bool AreSameFloats(float first, float second) {
  return std::bit_cast<std::uint32_t>(first) == std::bit_cast<std::uint32_t>(second) ||
         (std::isnan(first) && std::isnan(second));
}

std::string FormatFloat(float number) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

RefPtr<Image> MakeImage(Size size, unsigned color_mode, Samples samples, std::uint32_t seed) {
  RefPtr<Image> image(new Image(size.x, size.y, color_mode, nullptr));
  std::mt19937 random(seed);
  float* to = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    // Sixteenths from -1 to 2, so that some of them meet common constants and each other exactly.
    to[i] = static_cast<float>(static_cast<int>(random() % 49) - 16) / 16.0F;
    // The first image starts with each of the awkward ones, so that small images hold some.
    if (samples == Samples::kAwkward && (i < std::size(kAwkward) || random() % 3 == 0)) {
      to[i] = kAwkward[i < std::size(kAwkward) ? (i + seed - 1) % std::size(kAwkward) : random() % std::size(kAwkward)];
    }
  }
  image->SetPin(3, -2);
  image->SetPivot(0.25F, 0.75F);
  image->SetValueLowHigh(-0.5F, 1.5F);
  image->SetOutsideValue(0.125F);
  return image;
}

PlugValue MakeNeutral(unsigned type) {
  switch (type) {
    case PlugType::kFlag: return PlugValue(true);
    case PlugType::kNumber: return PlugValue(0.5);
    case PlugType::kText: return PlugValue(std::string("text"));
    case PlugType::kColor: return PlugValue(Rgbo{0.25, 0.5, 0.75, 1.0});
    case PlugType::kPoint: return PlugValue(Point{1.0, 2.0});
    case PlugType::kFrame: return PlugValue(Frame{0.0, 0.0, 4.0, 3.0});
    default: return {};
  }
}

/// What a connection carries: an output without an image delivers nothing.
PlugValue Carry(const RefPtr<Image>& image) { return image ? PlugValue(image.Get()) : PlugValue(); }

/// As the engine: an exception becomes the error state, and cached results go.
std::string EvaluateOutput(Node& node, unsigned output, const std::vector<PlugValue>& inputs) {
  try {
    node.Evaluate(output, inputs);
    return {};
  } catch (const std::length_error&) {
    node.SetState(output, Node::State::kError, kOversizeMessage);
  } catch (const std::bad_alloc&) {
    node.SetState(output, Node::State::kError, kOversizeMessage);
  } catch (const std::exception& error) {
    node.SetState(output, Node::State::kError, error.what());
  } catch (...) {
    DropResults(node);
    return "an exception that is not a std::exception leaves Evaluate; a node reports failure through SetState, with a "
           "message";
  }
  DropResults(node);
  return {};
}

/// What is wrong with an image at an output. Reads all its samples.
std::string FindProblem(const Image& image) {
  const std::string size = std::to_string(image.GetSizeX()) + " x " + std::to_string(image.GetSizeY());
  if (image.GetRefCount() == 0) {
    return "an image without a reference; a node takes a reference to each image that it caches";
  }
  if (image.GetSizeX() < 0 || image.GetSizeY() < 0 || image.GetSizeX() > Image::GetMaxSizeX() ||
      image.GetSizeY() > Image::GetMaxSizeY()) {
    return "an image of " + size + "; at most " + std::to_string(Image::GetMaxSizeX()) + " x " +
           std::to_string(Image::GetMaxSizeY()) + " are allowed";
  }
  if (ColorMode::GetNumChannels(image.GetColorMode()) == 0) {
    return "an image of colour mode " + std::to_string(image.GetColorMode()) +
           ", which does not exist; the modes are "
           "0 to " +
           std::to_string(ColorMode::kCount - 1);
  }
  if (image.GetNumSamples() > 0 && image.GetConstArray() == nullptr) {
    return "an image of " + size + " without samples; each output image holds all its samples";
  }
  return {};
}

std::string InQuotes(const std::string& text) { return "\"" + text + "\""; }

/// What is wrong with the state that an evaluation leaves.
std::string FindStateProblem(const Node& node) {
  const std::string& message = node.GetStateMessage();
  const auto state = static_cast<unsigned>(node.GetState());
  if (state > static_cast<unsigned>(Node::State::kFileError)) {
    return "the node is in state " + std::to_string(state) + ", which does not exist; an error is 3";
  }
  if (node.IsInError() && message.empty()) {
    return "the node is in an error state without a message; SetState is given one line that names the cause";
  }
  const auto is_control = [](unsigned char letter) { return letter < 0x20 || letter == 0x7F; };
  if (std::any_of(message.begin(), message.end(), is_control)) {
    return "the message of the node's state holds control characters; it is one line of text";
  }
  return {};
}

bool IsOneOf(const Image* image, const std::vector<PlugValue>& inputs) {
  return std::any_of(inputs.begin(), inputs.end(), [image](const PlugValue& value) {
    return value.GetType() == PlugType::kImage && value.GetImage() == image;
  });
}

}  // namespace

void DropResults(Node& node) {
  NodeEvent event;
  event.kind = NodeEvent::kDropCachedResults;
  node.OnProcessEvent(event);
}

Setup MakeSetup(Size size, unsigned color_mode, Samples samples) {
  Setup setup;
  setup.about = std::to_string(size.x) + " x " + std::to_string(size.y) + " " + ColorMode::GetName(color_mode) +
                " images" + (samples == Samples::kAwkward ? " of awkward samples" : "");
  for (const std::uint32_t seed : {1U, 2U}) setup.images.push_back(MakeImage(size, color_mode, samples, seed));
  return setup;
}

std::vector<PlugValue> MakeInputs(Node& node, const Setup& setup) {
  std::vector<PlugValue> values;
  std::size_t next = 0;
  for (unsigned input = 0; input < node.GetNumRegularInputs(); ++input) {
    const PlugRecord& plug = node.GetInplugs()[input];
    const std::size_t before = values.size();
    if (plug.type != PlugType::kImage) {
      values.push_back(setup.images.empty() ? PlugValue() : MakeNeutral(plug.type));
    } else if (plug.connections == PlugRecord::kAnyNumber) {
      for (const RefPtr<Image>& image : setup.images) values.push_back(Carry(image));
    } else if (!setup.images.empty()) {
      values.push_back(Carry(setup.images[next++ % setup.images.size()]));
    }
    if (values.size() == before) values.emplace_back();
    node.SetRegularInputEntries(input, static_cast<unsigned>(values.size() - before));
  }
  for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) {
    const Attribute* attribute = node.GetAttribute(id);
    const PlugValue own = attribute != nullptr ? attribute->GetValue() : PlugValue();
    values.push_back(id < setup.attributes.size() ? setup.attributes[id] : own);
  }
  return values;
}

Trial Evaluate(Subject& subject, Node& node, const Setup& setup, bool announce) {
  Trial trial;
  const std::vector<PlugValue> inputs = MakeInputs(node, setup);
  const std::string doing =
      "evaluating " + std::string(node.IsEnabled() ? "" : "the disabled node with ") + setup.about;
  if (announce) subject.At(doing);
  node.SetState(0, Node::State::kIdle, {});
  // A node without outputs acts on something else and is evaluated as a whole.
  const auto outputs = static_cast<unsigned>(node.GetOutplugs().size());
  for (unsigned output = 0; output < std::max(outputs, 1U) && !node.IsInError(); ++output) {
    const std::string problem = EvaluateOutput(node, output, inputs);
    if (trial.problem.empty() && !problem.empty()) trial.problem = problem;
    if (!problem.empty()) break;
  }
  trial.in_error = node.IsInError();
  trial.message = node.GetStateMessage();
  if (trial.problem.empty()) trial.problem = FindStateProblem(node);
  for (unsigned output = 0; output < outputs; ++output) {
    OutputCopy copy;
    const Image* image = node.GetOutputImage(output);
    if (image != nullptr) {
      const std::string problem =
          IsOneOf(image, inputs) ? "the input image itself; a node gives an image of its own" : FindProblem(*image);
      if (problem.empty()) {
        copy = CopyOf(*image);
      } else if (trial.problem.empty()) {
        trial.problem = "output " + InQuotes(node.GetOutplugs()[output].name) + " holds " + problem;
      }
    }
    trial.outputs.push_back(std::move(copy));
  }
  if (!trial.problem.empty()) trial.problem = "after " + doing + " " + trial.problem;
  return trial;
}

Setup CopyOf(const Setup& setup) {
  Setup copy = setup;
  for (RefPtr<Image>& image : copy.images) image.Reset(new Image(*image));
  return copy;
}

OutputCopy CopyOf(const Image& image) {
  OutputCopy copy;
  copy.has_image = true;
  copy.header = image.GetImageHeader();
  copy.samples.assign(image.GetConstArray(), image.GetConstArray() + image.GetNumSamples());
  return copy;
}

bool AreSame(const OutputCopy& first, const OutputCopy& second) {
  const ImageHeader& a = first.header;
  const ImageHeader& b = second.header;
  return first.has_image == second.has_image && a.size_x == b.size_x && a.size_y == b.size_y &&
         a.color_mode == b.color_mode && a.pin_x == b.pin_x && a.pin_y == b.pin_y &&
         AreSameFloats(a.pivot_x, b.pivot_x) && AreSameFloats(a.pivot_y, b.pivot_y) &&
         AreSameFloats(a.value_low, b.value_low) && AreSameFloats(a.value_high, b.value_high) &&
         AreSameFloats(a.outside_value, b.outside_value) &&
         std::equal(first.samples.begin(), first.samples.end(), second.samples.begin(), second.samples.end(),
                    AreSameFloats);
}

std::string FindDifference(const Node& node, const Trial& first, const Trial& second) {
  if (first.in_error != second.in_error || first.message != second.message) {
    return "the node's state is " + InQuotes(first.message) + " and then " + InQuotes(second.message);
  }
  for (std::size_t output = 0; output < std::min(first.outputs.size(), second.outputs.size()); ++output) {
    const OutputCopy& a = first.outputs[output];
    const OutputCopy& b = second.outputs[output];
    if (AreSame(a, b)) continue;
    const std::string which = "output " + InQuotes(node.GetOutplugs()[output].name);
    if (a.has_image != b.has_image) return which + " has an image only sometimes";
    const auto [left, right] =
        std::mismatch(a.samples.begin(), a.samples.end(), b.samples.begin(), b.samples.end(), AreSameFloats);
    if (a.samples.size() != b.samples.size() || left == a.samples.end()) {
      return which + " has another size, mode, pin, pivot or value range";
    }
    return "sample " + std::to_string(left - a.samples.begin()) + " of " + which + " is " + FormatFloat(*left) +
           " and then " + FormatFloat(*right);
  }
  return {};
}

std::vector<PlugValue> GetWords(const Attribute& attribute) {
  std::vector<PlugValue> values;
  if (attribute.GetKind() == Attribute::Kind::kFlag) values = {PlugValue(false), PlugValue(true)};
  for (const std::string& word : attribute.GetChoices()) values.emplace_back(word);
  return values;
}

std::vector<PlugValue> GetLimits(const Attribute& attribute) {
  std::vector<PlugValue> values = GetWords(attribute);
  // A plug that is connected to something that delivers nothing.
  values.emplace_back();
  switch (attribute.GetKind()) {
    case Attribute::Kind::kNumber:
      // A connection delivers numbers as they are, so the bounds do not hold there.
      for (const double number : {attribute.GetLowest(), attribute.GetHighest(), -1e308, 1e308}) {
        values.emplace_back(number);
      }
      break;
    case Attribute::Kind::kChoice: values.emplace_back(std::string("no such word")); break;
    case Attribute::Kind::kString: values.emplace_back(std::string()); break;
    case Attribute::Kind::kColor: values.emplace_back(Rgbo{-1.0, 0.0, 2.0, 0.0}); break;
    case Attribute::Kind::kPoint: values.emplace_back(Point{-1e6, 1e6}); break;
    case Attribute::Kind::kFrame: values.emplace_back(Frame{0.0, 0.0, 0.0, -1.0}); break;
    case Attribute::Kind::kFlag: break;
  }
  return values;
}

std::string Describe(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kNone: return "nothing";
    case PlugType::kFlag: return value.GetFlag() ? "true" : "false";
    case PlugType::kNumber: {
      char text[32];
      return std::string(text, std::to_chars(text, text + sizeof(text), value.GetNumber()).ptr);
    }
    case PlugType::kText: return InQuotes(value.GetText());
    default: return PlugType::GetName(value.GetType());
  }
}

}  // namespace ScEng
