// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/AmbientOcclusion/ImageAmbientOcclusionNode.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Host/Gpu/GpuEngine.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeNode;

class AmbientOcclusionNode : public testing::Test {
 public:
  /// What the engine gives for the parameters that the node should have passed on.
  static std::vector<float> Expected(const Image& image, float radius, char border) {
    ScEng::Status status;
    const ImagePtr result(GpuEngine::Get()->ExecuteAmbientOcclusion(&image, radius, border, status));
    EXPECT_EQ(status.GetMessage(), "");
    return result ? Testing::GetSamples(*result) : std::vector<float>();
  }

  /// A pit and a tower near the left border, so that every parameter shows.
  static ImageRef MakeGround() {
    std::vector<float> samples(24 * 9, 0.5F);
    samples[4 * 24 + 2] = 0.0F;
    samples[4 * 24 + 6] = 1.0F;
    samples[2 * 24 + 23] = 0.9F;
    return Testing::MakeImage(24, 9, ColorMode::kValue, samples);
  }

  Testing::NodeRef<ImageAmbientOcclusionNode> node_ = MakeNode<ImageAmbientOcclusionNode>();
};

TEST_F(AmbientOcclusionNode, PassesRadiusAndBorderOn) {
  const ImageRef image = MakeGround();
  const std::vector<float> seamless = Expected(*image, 3.0F, 'p');
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), seamless));
  Testing::SetFlag(*node_, "seamless", false);
  const std::vector<float> bordered = Expected(*image, 3.0F, 'b');
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), bordered));
  EXPECT_NE(seamless, bordered);
  Testing::SetNumber(*node_, "radius", 7.5);
  const Image* output = Testing::Evaluate(*node_, {image.Get()});
  EXPECT_TRUE(HoldsSamples(output, Expected(*image, 7.5F, 'b')));
  EXPECT_EQ(output->GetRefCount(), 1U);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(AmbientOcclusionNode, RunsWithTwoAndAHalfPixelsWhereTheRadiusHasNoValue) {
  const ImageRef image = MakeGround();
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "radius") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), Expected(*image, 2.5F, 'p')));
}

TEST_F(AmbientOcclusionNode, RepeatsBorderPixelsWhereSeamlessHasNoValue) {
  const ImageRef image = MakeGround();
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "seamless") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), Expected(*image, 3.0F, 'b')));
}

TEST_F(AmbientOcclusionNode, IsInTheErrorStateWithTheEnginesMessageWithoutADevice) {
  const ImageRef image = MakeGround();
  const ImageRef shown(Testing::Evaluate(*node_, {image.Get()}));
  ASSERT_TRUE(shown);
  setenv("VALUE_DEVICE", "no such device", 1);
  // Selecting the default anew makes the engine read the variable.
  EXPECT_FALSE(GpuEngine::Get()->SelectDevice("").IsError());
  ScEng::Status status;
  EXPECT_EQ(GpuEngine::Get()->ExecuteAmbientOcclusion(image.Get(), 3.0F, 'p', status), nullptr);
  EXPECT_EQ(Testing::Evaluate(*node_, {image.Get()}), nullptr);
  EXPECT_TRUE(Testing::IsInErrorState(*node_, status.GetMessage()));
  EXPECT_NE(status.GetMessage().find("no such device"), std::string::npos);
  EXPECT_EQ(shown->GetRefCount(), 1U) << "the old result is released";
  unsetenv("VALUE_DEVICE");
  EXPECT_FALSE(GpuEngine::Get()->SelectDevice("").IsError());
}

}  // namespace
