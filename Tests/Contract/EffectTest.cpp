// SPDX-License-Identifier: Apache-2.0
//
// Holds what the rows of attributes say of their effect against the truth, in both directions: an attribute that is
// said to have no effect changes no bit of any output, and one that is not said so changes some.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Effect.h"
#include "Host/Tools/NodeInterface.h"
#include "Tests/Support/LibraryNodes.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::ImageRef;

using Setting = std::vector<std::pair<std::string, double>>;

/// Settings with which no attribute hides another by its value; images have samples in steps of an eighth from 0 to 1.
const std::map<std::string, Setting>& GetBases() {
  static const std::map<std::string, Setting> kBases{
      {"ImageValueClampNode", {{"low", 0.25}, {"high", 0.75}}},
      {"ImageValueConditionNode", {{"a", 0.25}, {"b", 0.75}}},
      {"ImageValueRangeNode", {{"center", 0.5}, {"size", 0.125}, {"falloff", 0.5}}},
      {"ImageReliefNode", {{"radius", 3.0}, {"multiplier", 1.5}, {"soften", 1.0}}},
      {"ImageToValueNode", {{"low", -1.0}, {"high", 2.0}}},
      {"ImageValueMinimumNode", {{"constant", 0.5}}},
      {"ImageValueMaximumNode", {{"constant", 0.5}}},
      {"ImageComponentEdgesNode", {{"threshold", 0.25}}},
      {"ImageConnectedComponentsNode", {{"threshold", 0.0625}}},
  };
  return kBases;
}

/// Changes of a base, by one number, at which attributes lose their effect or just have it.
const std::map<std::string, std::vector<Setting>>& GetVariants() {
  static const std::map<std::string, std::vector<Setting>> kVariants{
      {"ImageValueRangeNode", {{{"falloff", 0.0}}}},
      {"ImageReliefNode",
       {{{"radius", 0.0}, {"soften", 0.0}},
        {{"radius", 0.5}},
        {{"radius", 0.625}},
        {{"radius", 1.5}},
        {{"radius", 1.625}}}},
  };
  return kVariants;
}

/// Samples in eighths, in blocks, so that components and edges are there, and a declared range that is not theirs.
ImageRef MakeBlocks(std::uint32_t seed) {
  constexpr int kSize = 16;
  constexpr std::size_t kBlock = 2;
  std::mt19937 random(seed);
  std::vector<float> levels(64);
  for (float& level : levels) level = static_cast<float>(random() % 9) / 8.0F;
  std::vector<float> samples;
  for (std::size_t y = 0; y < kSize; ++y) {
    for (std::size_t x = 0; x < kSize; ++x) samples.push_back(levels[y / kBlock * 8 + x / kBlock]);
  }
  ImageRef image = Testing::MakeImage(kSize, kSize, ColorMode::kValue, samples);
  image->SetValueLowHigh(-0.5F, 1.5F);
  return image;
}

/// Single pixels of 1, twice as high as the declared range, far from each other and on borders.
ImageRef MakeDots(std::size_t first) {
  constexpr int kSize = 16;
  std::vector<float> samples(kSize * kSize, 0.0F);
  for (std::size_t i = first; i < samples.size(); i += 53) samples[i] = 1.0F;
  ImageRef image = Testing::MakeImage(kSize, kSize, ColorMode::kValue, samples);
  image->SetValueLowHigh(0.0F, 0.5F);
  return image;
}

/// Everything that a node makes: samples and headers of all outputs.
using Result = std::vector<std::vector<float>>;

bool AreSame(const Result& a, const Result& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
    return one.size() == other.size() && std::memcmp(one.data(), other.data(), one.size() * sizeof(float)) == 0;
  });
}

class AttributeEffect : public testing::Test {
 protected:
  /// Samples and headers of all outputs, of one set of images after the other.
  Result Evaluate(Node& node, std::size_t count) const {
    Result result;
    for (const auto& set : images_) {
      std::vector<const Image*> images;
      for (std::size_t i = 0; i < count; ++i) images.push_back(set[i].Get());
      for (unsigned output = 0; output < node.GetOutplugs().size(); ++output) {
        node.Evaluate(output, Testing::MakeInputs(node, images));
        EXPECT_FALSE(node.IsInError()) << node.GetStateMessage();
        const Image* image = node.GetOutputImage(output);
        if (image == nullptr) {
          ADD_FAILURE() << node.GetName() << " has no output";
          continue;
        }
        std::vector<float>& all = result.emplace_back();
        const float* samples = image->GetConstArray();
        all.assign(samples, samples + image->GetNumSamples());
        all.insert(all.end(), {image->GetValueLow(), image->GetValueHigh(), static_cast<float>(image->GetSizeX())});
      }
    }
    return result;
  }

  /// Whether any other value of an attribute makes anything else. The attribute is left as it was.
  [[nodiscard]] bool ChangesAnything(Node& node, Attribute& attribute, std::size_t count) const {
    const Result before = Evaluate(node, count);
    bool changes = false;
    const auto attempt = [&](bool is_set) {
      if (is_set && !changes) changes = !AreSame(before, Evaluate(node, count));
    };
    const PlugValue value = attribute.GetValue();
    switch (attribute.GetKind()) {
      case Attribute::Kind::kFlag:
        attempt(attribute.SetFlag(!value.GetFlag(), false));
        attribute.SetFlag(value.GetFlag(), false);
        break;
      case Attribute::Kind::kNumber:
        for (const double other : {value.GetNumber() + 0.25, value.GetNumber() + 2.0, value.GetNumber() * 4.0}) {
          attempt(attribute.SetNumber(other, false));
        }
        attribute.SetNumber(value.GetNumber(), false);
        break;
      default:
        for (const std::string& word : attribute.GetChoices()) attempt(attribute.SetChoice(word, false));
        attribute.SetChoice(value.GetText(), false);
        break;
    }
    return changes;
  }

  /// Of all attributes, or of those whose effect depends on `other`.
  void CompareWithTruth(Node& node, std::size_t count, const std::string& where, const std::string& other = "") {
    for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) {
      Attribute& attribute = *node.GetAttribute(id);
      if (!other.empty() && attribute.GetRow()->effect.attribute != other) continue;
      const std::string idle = ScEng::DescribeNoEffect(node, attribute, count);
      EXPECT_EQ(ChangesAnything(node, attribute, count), idle.empty())
          << node.GetName() << " " << attribute.GetName() << " " << where << ": " << idle;
      ++compared_;
      if (!idle.empty()) ++idle_;
    }
  }

  /// With every word of every choice, the others as they are.
  void CompareEveryWord(Node& node, std::size_t count, const std::string& where) {
    CompareWithTruth(node, count, where);
    for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) {
      Attribute& choice = *node.GetAttribute(id);
      const std::string before = choice.GetValue().GetText();
      for (const std::string& word : choice.GetChoices()) {
        choice.SetChoice(word, false);
        CompareWithTruth(node, count, where + " " + word);
      }
      if (!choice.GetChoices().empty()) choice.SetChoice(before, false);
    }
  }

  static void Set(Node& node, const Setting& setting) {
    for (const auto& [name, value] : setting) Testing::SetNumber(node, name.c_str(), value);
  }

  const std::vector<std::vector<ImageRef>> images_{{MakeBlocks(1), MakeBlocks(2)}, {MakeDots(3), MakeDots(0)}};
  std::size_t compared_ = 0;
  std::size_t idle_ = 0;
};

TEST_F(AttributeEffect, IsWhatTheRowsSay) {
  for (const auto& descriptor : Testing::GetLibraryDescriptors()) {
    const std::string type = descriptor->GetNodeFactory()->GetTypeName();
    const Testing::NodeRef<Node> node(descriptor->GetNodeFactory()->CreateNode());
    const auto base = GetBases().find(type);
    if (base != GetBases().end()) Set(*node, base->second);
    const bool takes_many = node->GetInplugs()[0].connections == PlugRecord::kAnyNumber;
    const std::size_t most = takes_many ? 2 : node->GetNumRegularInputs();
    for (std::size_t count = 1; count <= most; ++count) {
      CompareEveryWord(*node, count, "with " + std::to_string(count));
    }
    const auto variants = GetVariants().find(type);
    if (variants == GetVariants().end()) continue;
    for (const Setting& variant : variants->second) {
      Set(*node, variant);
      const auto& [name, value] = variant.front();
      CompareWithTruth(*node, most, name + " " + std::to_string(value), name);
    }
  }
  // The words of the choices alone make some hundred cases.
  EXPECT_GT(compared_, 200U);
  EXPECT_GT(idle_, 20U);
}

}  // namespace
