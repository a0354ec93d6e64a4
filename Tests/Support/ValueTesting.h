// SPDX-License-Identifier: Apache-2.0
//
// What the tests of the node library share: small images, what plugs carry, and comparisons that know NaN.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Node.h"
#include "Host/Util/RefCounter.h"
#include "Tests/Support/ImageTesting.h"

namespace Testing {

inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kLargest = std::numeric_limits<float>::max();
inline constexpr float kSmallest = std::numeric_limits<float>::denorm_min();

using ImageRef = ScEng::RefPtr<Image>;
template <class NodeClass = Node>
using NodeRef = ScEng::RefPtr<NodeClass>;

template <class NodeClass>
NodeRef<NodeClass> MakeNode() {
  return NodeRef<NodeClass>(new NodeClass);
}

/// For EXPECT_PRED_FORMAT2: equal bits (so +0.0 is not -0.0), any NaN being equal to any NaN.
inline testing::AssertionResult SameFloat(const char* actual_text, const char* expected_text, float actual,
                                          float expected) {
  if (AreSame(actual, expected)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << actual_text << " is " << testing::PrintToString(actual) << ", not "
                                     << expected_text << " = " << testing::PrintToString(expected);
}
#define EXPECT_SAME(actual, expected) EXPECT_PRED_FORMAT2(::Testing::SameFloat, actual, expected)

/// Whether the image is there and holds exactly these samples (bits, any NaN).
inline testing::AssertionResult HoldsSamples(const Image* image, const std::vector<float>& expected) {
  if (image == nullptr) return testing::AssertionFailure() << "there is no image";
  const std::vector<float> actual = GetSamples(*image);
  const bool same = std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(), AreSame);
  if (same) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the image holds " << testing::PrintToString(actual) << ", not "
                                     << testing::PrintToString(expected);
}

inline ImageRef MakeImage(int size_x, int size_y, unsigned color_mode, const std::vector<float>& samples) {
  ImageRef image(new Image(size_x, size_y, color_mode, nullptr));
  EXPECT_EQ(image->GetNumSamples(), samples.size());
  std::copy(samples.begin(), samples.end(), image->GetArray());
  return image;
}

/// One row of the value mode.
inline ImageRef MakeRow(const std::vector<float>& values) {
  return MakeImage(static_cast<int>(values.size()), 1, ColorMode::kValue, values);
}

/// One pixel of the colour mode for each four numbers.
inline ImageRef MakeColors(const std::vector<float>& samples) {
  return MakeImage(static_cast<int>(samples.size() / 4), 1, ColorMode::kColor, samples);
}

/// An image whose header differs from a fresh one in every entry, for tests that ask what is kept.
inline ImageRef MakeMarked(unsigned color_mode) {
  const int channels = ColorMode::GetNumChannels(color_mode);
  std::vector<float> samples;
  for (int i = 0; i < 6 * channels; ++i) samples.push_back(0.25F * static_cast<float>(i) - 1.0F);
  ImageRef image = MakeImage(3, 2, color_mode, samples);
  image->SetPin(7, -5);
  image->SetPivot(0.25F, 0.75F);
  image->SetValueLowHigh(-2.0F, 6.0F);
  image->SetOutsideValue(0.5F);
  return image;
}

/// Whether `image` is another image with the same samples and the same header.
inline testing::AssertionResult IsCopyOf(const Image* image, const Image& original) {
  if (image == &original) return testing::AssertionFailure() << "it is the original itself";
  const testing::AssertionResult same = HoldsSamples(image, GetSamples(original));
  if (!same) return same;
  const bool same_header =
      image->GetSizeX() == original.GetSizeX() && image->GetSizeY() == original.GetSizeY() &&
      image->GetColorMode() == original.GetColorMode() && image->GetPinX() == original.GetPinX() &&
      image->GetPinY() == original.GetPinY() && image->GetPivotX() == original.GetPivotX() &&
      image->GetPivotY() == original.GetPivotY() && image->GetValueLow() == original.GetValueLow() &&
      image->GetValueHigh() == original.GetValueHigh() && image->GetOutsideValue() == original.GetOutsideValue();
  return same_header ? testing::AssertionSuccess() : testing::AssertionFailure() << "its header is another one";
}

/// Whether `image` is a value image with the size, pin and pivot of another, and a fresh outside value.
inline testing::AssertionResult IsValueImageInPlaceOf(const Image* image, const Image& original) {
  if (image == nullptr) return testing::AssertionFailure() << "there is no image";
  if (image->GetColorMode() != ColorMode::kValue) {
    return testing::AssertionFailure() << "its mode is " << image->GetColorMode();
  }
  if (image->GetOutsideValue() != 0.0F) {
    return testing::AssertionFailure() << "its outside value is " << image->GetOutsideValue();
  }
  const bool same_place = image->GetSizeX() == original.GetSizeX() && image->GetSizeY() == original.GetSizeY() &&
                          image->GetPinX() == original.GetPinX() && image->GetPinY() == original.GetPinY() &&
                          image->GetPivotX() == original.GetPivotX() && image->GetPivotY() == original.GetPivotY();
  return same_place ? testing::AssertionSuccess() : testing::AssertionFailure() << "it lies elsewhere";
}

/// What the plugs of a node carry: one image for each regular input (null for an input that is not connected), or
/// all images for an input that takes many; then the attributes' own values.
inline std::vector<PlugValue> MakeInputs(Node& node, const std::vector<const Image*>& images) {
  std::vector<PlugValue> values;
  const bool takes_many = node.GetNumRegularInputs() == 1 && node.GetInplugs()[0].connections == PlugRecord::kAnyNumber;
  if (takes_many) node.SetRegularInputEntries(0, static_cast<unsigned>(std::max<std::size_t>(images.size(), 1)));
  for (const Image* image : images) {
    PlugValue& value = values.emplace_back();
    if (image != nullptr) value = image;
  }
  if (takes_many && images.empty()) values.emplace_back();
  while (values.size() < node.GetNumRegularInputs()) values.emplace_back();
  for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) values.push_back(node.GetAttribute(id)->GetValue());
  return values;
}

/// The plug of an attribute among `inputs`.
inline PlugValue& AttributePlug(const Node& node, std::vector<PlugValue>& inputs, const char* attribute) {
  return inputs.at(node.GetInplugIdFromAttributeId(node.GetAttribute(std::string(attribute))->GetId()));
}

/// Evaluates output 0 as the engine does and returns it.
inline Image* Evaluate(Node& node, const std::vector<const Image*>& images) {
  node.Evaluate(0, MakeInputs(node, images));
  return node.GetOutputImage(0);
}

inline bool DropCachedResults(Node& node) {
  NodeEvent event;
  event.kind = 11;
  return node.OnProcessEvent(event);
}

inline void SetNumber(Node& node, const char* attribute, double value) {
  ASSERT_TRUE(node.GetAttribute(std::string(attribute))->SetNumber(value, false)) << attribute;
}
inline void SetChoice(Node& node, const char* attribute, const char* word) {
  ASSERT_TRUE(node.GetAttribute(std::string(attribute))->SetChoice(word, false)) << attribute;
}
inline void SetFlag(Node& node, const char* attribute, bool value) {
  ASSERT_TRUE(node.GetAttribute(std::string(attribute))->SetFlag(value, false)) << attribute;
}

/// Whether the node is in the error state, state 3, with this message.
inline testing::AssertionResult IsInErrorState(const Node& node, const std::string& message) {
  if (static_cast<unsigned>(node.GetState()) != 3) {
    return testing::AssertionFailure() << "the state is " << static_cast<unsigned>(node.GetState());
  }
  if (node.GetStateMessage() != message) {
    return testing::AssertionFailure() << "the message is \"" << node.GetStateMessage() << "\"";
  }
  return testing::AssertionSuccess();
}

inline constexpr const char* kOversize = "Output image is larger than maximum image size.";

/// Expects that a node whose operation the word of an attribute chooses has neither operation nor output for each of
/// these words.
template <class NodeClass>
void ExpectNoOperationFor(NodeClass& node, const char* attribute, const std::vector<PlugValue>& words) {
  const ImageRef image = MakeRow({1.0F});
  auto inputs = MakeInputs(node, {image.Get()});
  for (const PlugValue& word : words) {
    AttributePlug(node, inputs, attribute) = word;
    EXPECT_EQ(node.CreateValueOperation(inputs), nullptr);
    node.Evaluate(0, inputs);
    EXPECT_EQ(node.GetOutputImage(0), nullptr);
    EXPECT_TRUE(IsInErrorState(node, kOversize));
  }
}

}  // namespace Testing
