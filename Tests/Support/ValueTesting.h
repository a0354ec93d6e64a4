// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Node.h"
#include "Host/Util/RefCounter.h"
#include "Tests/Support/ImageTesting.h"
#include "Tests/Support/Numbers.h"
#include "Tests/Support/Text.h"

/// What the tests of nodes share: what plugs carry, and one evaluation.
namespace Testing {

using ImageRef = ImagePtr;
template <class NodeClass = Node>
using NodeRef = ScEng::RefPtr<NodeClass>;

template <class NodeClass>
NodeRef<NodeClass> MakeNode() {
  return NodeRef<NodeClass>(new NodeClass);
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
