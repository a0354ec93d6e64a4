// SPDX-License-Identifier: Apache-2.0
//
// One contract for every node of the catalogue: what it gives depends on its inputs only, never on the number of
// threads or on the instruction set, and is what its definition gives where that is written down as a plain loop. Every
// node is run over sizes that end a vector early and late, every colour mode, samples that are not ordinary numbers,
// every choice word, the bounds of every attribute, and plugs that carry nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Contract/ValueNodeReferences.h"
#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/LibraryNodes.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::AttributeValues;
using Testing::ImageRef;

struct Size {
  int x;
  int y;
};

// A single pixel, rows and columns, odd primes, and around the lengths of vectors (4, 8 and 16 samples).
constexpr Size kSizes[] = {{1, 1},  {2, 1},  {1, 5},  {3, 1},  {5, 1},  {7, 1},  {9, 1},  {15, 1},
                           {1, 17}, {31, 1}, {33, 1}, {65, 1}, {13, 7}, {7, 11}, {17, 3}, {64, 2}};
constexpr Size kFewSizes[] = {{1, 1}, {17, 3}, {7, 9}};
// Large enough that threads get pieces of their own, and that results are written past the caches.
constexpr Size kLargeSizes[] = {{521, 257}, {1031, 2053}};

/// With the sanitizers everything takes ten times as long; there the same paths are walked with fewer inputs.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSlow = true;
#else
constexpr bool kIsSlow = false;
#endif

enum class Kind { kOrdinary, kFlat, kAwkward };

std::vector<float> MakeSamples(std::size_t count, Kind kind, std::mt19937& random) {
  static const float kAwkward[] = {
      Testing::kNan,      -Testing::kNan,      Testing::kInfinity, -Testing::kInfinity, 0.0F, -0.0F,
      Testing::kSmallest, -Testing::kSmallest, Testing::kLargest,  -Testing::kLargest,  1.0F, -1.0F};
  std::vector<float> samples(count, 0.7F);
  if (kind == Kind::kFlat) return samples;
  for (float& sample : samples) {
    // Sixteenths from -1 to 2, so that some of them meet the constants and each other exactly.
    sample = static_cast<float>(static_cast<int>(random() % 49) - 16) / 16.0F;
    if (kind == Kind::kAwkward && random() % 3 == 0) sample = kAwkward[random() % std::size(kAwkward)];
  }
  return samples;
}

ImageRef MakeImage(const Size& size, unsigned mode, Kind kind, std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
  const std::size_t pixels = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
  ImageRef image = Testing::MakeImage(size.x, size.y, mode, MakeSamples(pixels * channels, kind, random));
  image->SetPin(3, -2);
  image->SetValueLowHigh(-0.5F, 1.5F);
  return image;
}

/// One thing that is tried with a node: what its attribute plugs carry, by attribute id.
using Setting = std::vector<PlugValue>;

Setting Defaults(const Node& node) {
  Setting setting;
  for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) setting.push_back(node.GetAttribute(id)->GetValue());
  return setting;
}

/// Numbers inside the bounds that differ from each other and from the defaults.
Setting Middles(const Node& node) {
  Setting setting = Defaults(node);
  for (std::size_t id = 0; id < setting.size(); ++id) {
    const Attribute& attribute = *node.GetAttribute(id);
    if (attribute.GetKind() != Attribute::Kind::kNumber) continue;
    // Whole steps count pixels or levels; a few of them.
    const double whole = attribute.GetStep() >= 1.0 ? 3.0 : 0.0;
    const double number = whole + 0.3125 + 0.25 * static_cast<double>(id);
    setting[id] = PlugValue(std::clamp(number, attribute.GetLowest(), attribute.GetHighest()));
  }
  return setting;
}

std::vector<PlugValue> Alternatives(const Attribute& attribute) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kNumber:
      // A radius of hundreds of pixels is for the optimised build.
      if (kIsSlow && attribute.GetName() == "radius") {
        return {PlugValue(attribute.GetLowest()), PlugValue(20.0), PlugValue(3.9), PlugValue()};
      }
      return {PlugValue(attribute.GetLowest()),
              PlugValue(attribute.GetHighest()),
              PlugValue(3.9),
              PlugValue(),
              PlugValue(static_cast<double>(Testing::kNan)),
              PlugValue(static_cast<double>(Testing::kInfinity))};
    case Attribute::Kind::kFlag: return {PlugValue(false), PlugValue(true), PlugValue()};
    case Attribute::Kind::kChoice: {
      std::vector<PlugValue> words{PlugValue(), PlugValue(std::string("no such word"))};
      for (const std::string& word : attribute.GetChoices()) words.emplace_back(word);
      return words;
    }
    default: return {};
  }
}

/// Every alternative of every attribute, the others at their defaults and at numbers in the middle.
std::vector<Setting> Variations(const Node& node) {
  std::vector<Setting> settings;
  for (const Setting& base : {Defaults(node), Middles(node)}) {
    for (std::size_t id = 0; id < base.size(); ++id) {
      for (const PlugValue& alternative : Alternatives(*node.GetAttribute(id))) {
        settings.push_back(base);
        settings.back()[id] = alternative;
      }
    }
  }
  return settings;
}

/// What an evaluation leaves at an output.
struct Result {
  bool exists = false;
  ImageHeader header;
  std::vector<float> samples;
  std::string error;
};

Result Evaluate(Node& node, const std::vector<PlugValue>& inputs, unsigned output) {
  node.SetState(output, Node::State::kIdle, "");
  node.Evaluate(output, inputs);
  Result result;
  if (node.GetState() == Node::State::kError) result.error = node.GetStateMessage();
  const Image* image = node.GetOutputImage(output);
  if (image == nullptr) return result;
  result.exists = true;
  result.header = image->GetImageHeader();
  result.samples = Testing::GetSamples(*image);
  return result;
}

testing::AssertionResult SameResult(const Result& expected, const Result& actual) {
  if (expected.exists != actual.exists) return testing::AssertionFailure() << "an output is there only sometimes";
  if (expected.error != actual.error) return testing::AssertionFailure() << "the error is \"" << actual.error << "\"";
  const ImageHeader& a = expected.header;
  const ImageHeader& b = actual.header;
  if (a.size_x != b.size_x || a.size_y != b.size_y || a.pin_x != b.pin_x || a.pin_y != b.pin_y ||
      a.pivot_x != b.pivot_x || a.pivot_y != b.pivot_y || !Testing::AreSame(a.value_low, b.value_low) ||
      !Testing::AreSame(a.value_high, b.value_high)) {
    return testing::AssertionFailure() << "the headers differ";
  }
  for (std::size_t i = 0; i < expected.samples.size(); ++i) {
    if (Testing::AreSame(expected.samples[i], actual.samples[i])) continue;
    return testing::AssertionFailure() << "sample " << i << " is " << actual.samples[i] << " instead of "
                                       << expected.samples[i];
  }
  return testing::AssertionSuccess();
}

/// A node with something to evaluate.
class Trial {
 public:
  Trial(Node& node, const Setting& setting, std::vector<ImageRef> images) : node_(node), images_(std::move(images)) {
    std::vector<const Image*> given;
    for (const ImageRef& image : images_) given.push_back(image.Get());
    inputs_ = Testing::MakeInputs(node, given);
    for (std::size_t id = 0; id < setting.size(); ++id) {
      inputs_.at(node.GetInplugIdFromAttributeId(static_cast<unsigned>(id))) = setting[id];
      attributes_[node.GetAttribute(id)->GetName()] = setting[id];
    }
  }

  /// Whether one thread and many, and every instruction set, give the same.
  void ExpectOneResult() {
    for (unsigned output = 0; output < node_.GetOutplugs().size(); ++output) {
      const Result first = Run(1, output);
      for (const std::size_t threads : {std::size_t{2}, std::size_t{16}}) {
        ASSERT_TRUE(SameResult(first, Run(threads, output))) << threads << " threads, output " << output << Describe();
      }
      Testing::OnEveryInstructionSet(
          [&] { ASSERT_TRUE(SameResult(first, Run(1, output))) << "output " << output << Describe(); });
      if (testing::Test::HasFatalFailure()) return;
    }
  }

  /// Whether the definition gives the same, on every instruction set.
  void ExpectTheDefinition(const std::string& type_name) {
    std::vector<const Image*> given;
    for (const ImageRef& image : images_) given.push_back(image.Get());
    for (unsigned output = 0; output < node_.GetOutplugs().size(); ++output) {
      const auto expected = Testing::GetExpectedSamples(type_name, output, given, attributes_);
      ASSERT_TRUE(expected.has_value());
      Testing::OnEveryInstructionSet([&] {
        const Result result = Run(1, output);
        ASSERT_EQ(result.exists, !expected->empty()) << "output " << output << Describe();
        for (std::size_t i = 0; i < expected->size(); ++i) {
          ASSERT_TRUE(Testing::AreSame(result.samples.at(i), (*expected)[i]))
              << "sample " << i << " of output " << output << " is " << result.samples[i] << " instead of "
              << (*expected)[i] << Describe();
        }
      });
      if (testing::Test::HasFatalFailure()) return;
    }
  }

 private:
  Result Run(std::size_t threads, unsigned output) {
    // What an image knows of its own range must not carry over from the run before.
    for (const ImageRef& image : images_) static_cast<void>(image->GetArray());
    ScEng::SetNumThreads(threads);
    Result result = Evaluate(node_, inputs_, output);
    ScEng::SetNumThreads(0);
    return result;
  }

  [[nodiscard]] std::string Describe() const {
    std::string text = ", " + std::to_string(images_.size()) + " images of " + std::to_string(images_[0]->GetSizeX()) +
                       " x " + std::to_string(images_[0]->GetSizeY()) + " " +
                       ColorMode::GetName(images_[0]->GetColorMode());
    for (const auto& [name, value] : attributes_) {
      text += ", " + name + "=";
      if (value.GetType() == PlugType::kNumber) text += std::to_string(value.GetNumber());
      if (value.GetType() == PlugType::kFlag) text += value.GetFlag() ? "true" : "false";
      if (value.GetType() == PlugType::kText) text += value.GetText();
    }
    return text;
  }

  Node& node_;
  std::vector<ImageRef> images_;
  std::vector<PlugValue> inputs_;
  AttributeValues attributes_;
};

/// Two images can be connected to a node with two inputs, any number to one with a plug for many.
std::vector<std::size_t> ImageCounts(const Node& node) {
  if (node.GetInplugs()[0].connections == PlugRecord::kAnyNumber) return {1, 2, 3};
  return node.GetNumRegularInputs() == 2 ? std::vector<std::size_t>{1, 2} : std::vector<std::size_t>{1};
}

std::vector<ImageRef> MakeImages(std::size_t count, const Size& size, unsigned mode, Kind kind) {
  std::vector<ImageRef> images;
  for (std::size_t i = 0; i < count; ++i)
    images.push_back(MakeImage(size, mode, kind, static_cast<std::uint32_t>(i + 1)));
  return images;
}

/// A node that waits for a device at every evaluation, or whose radius reaches far beyond these images, is tried with
/// less, so that the test ends in time.
bool TakesLong(const Node& node) { return node.GetName() == "Ambient Occlusion" || node.GetName() == "Relief"; }

/// Calls `body(trial)` for everything that is tried with a node.
template <class Body>
void ForEachTrial(Node& node, Body body) {
  const bool short_of_time = kIsSlow || TakesLong(node);
  const auto run = [&](const Setting& setting, const Size& size, Kind kind) {
    for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
      if (short_of_time && mode % 2 != 0) continue;
      for (const std::size_t count : ImageCounts(node)) {
        Trial trial(node, setting, MakeImages(count, size, mode, kind));
        body(trial);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  };
  for (const Size& size : kLargeSizes) {
    if (short_of_time && size.x > 1000) continue;
    Trial trial(node, Middles(node), MakeImages(ImageCounts(node).back(), size, ColorMode::kValue, Kind::kAwkward));
    body(trial);
    if (testing::Test::HasFatalFailure()) return;
  }
  for (const Kind kind : {Kind::kOrdinary, Kind::kFlat, Kind::kAwkward}) {
    for (const Setting& setting : {Defaults(node), Middles(node)}) {
      for (const Size& size : kSizes) {
        if (short_of_time && size.y == 1) continue;
        run(setting, size, kind);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
    if (short_of_time && kind != Kind::kAwkward) continue;
    for (const Setting& setting : Variations(node)) {
      for (const Size& size : kFewSizes) {
        if (short_of_time && size.y == 1) continue;
        run(setting, size, kind);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

class EveryNodeContract : public testing::TestWithParam<std::string> {};

TEST_P(EveryNodeContract, GivesTheSameBytesWhateverTheThreadsAndTheInstructionSet) {
  const ScEng::RefPtr<Node> node = Testing::MakeLibraryNode(GetParam());
  ForEachTrial(*node, [](Trial& trial) { trial.ExpectOneResult(); });
}

INSTANTIATE_TEST_SUITE_P(Node, EveryNodeContract, testing::ValuesIn(Testing::GetLibraryTypeNames()),
                         [](const auto& tested) { return tested.param; });

/// The nodes that work pixel by pixel have their definition in `GetExpectedSamples`; the analysis nodes keep theirs
/// beside their algorithms.
class ValueNodeContract : public testing::TestWithParam<std::string> {};

TEST_P(ValueNodeContract, GivesWhatItsDefinitionGives) {
  const ScEng::RefPtr<Node> node = Testing::MakeLibraryNode(GetParam());
  ForEachTrial(*node, [&](Trial& trial) { trial.ExpectTheDefinition(GetParam()); });
}

INSTANTIATE_TEST_SUITE_P(Node, ValueNodeContract,
                         testing::Values("ImageToValueNode", "ImageValueAddNode", "ImageValueSubtractNode",
                                         "ImageValueMultiplyNode", "ImageValueDivideNode", "ImageValuePowerNode",
                                         "ImageValueMinimumNode", "ImageValueMaximumNode", "ImageValueClampNode",
                                         "ImageValueStepsNode", "ImageValueConditionNode", "ImageValueCompareNode",
                                         "ImageValueRangeNode", "ImageValueFunctionNode"),
                         [](const auto& tested) { return tested.param; });

}  // namespace
