// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ArithmeticNodes.h"

#include <string_view>

#include "Value/Core/ValueLibrary.h"
#include "Value/Operations/ArithmeticOperations.h"
#include "Value/SelfTests/SelfTests.h"

namespace {

constexpr AttributeRow kAddAttributes[] = {ImageValueOperationManyNode::MakeConstantRow(
    0.0, "What is added to every sample when exactly one image is connected.")};
constexpr AttributeRow kSubtractAttributes[] = {ImageValueOperationManyNode::MakeConstantRow(
    0.0, "What is subtracted from every sample when exactly one image is connected.")};
constexpr AttributeRow kMultiplyAttributes[] = {ImageValueOperationManyNode::MakeConstantRow(
    1.0, "The factor for every sample when exactly one image is connected. -1 turns hills into hollows.")};
constexpr AttributeRow kDivideAttributes[] = {ImageValueOperationManyNode::MakeConstantRow(
    1.0, "The divisor of every sample when exactly one image is connected.")};
constexpr AttributeRow kPowerAttributes[] = {
    ImageValueOperationManyNode::MakeConstantRow(
        0.0, "Has no effect: with one image the exponent is always 1. Connect a second image for the exponents.")
        .WithoutEffect("one image passes through, and several have their exponents in the second and further ones")};
constexpr AttributeRow kMinimumAttributes[] = {ImageValueOperationManyNode::MakeConstantRow(
    1000.0, "The upper limit of every sample when exactly one image is connected.")};
constexpr AttributeRow kMaximumAttributes[] = {ImageValueOperationManyNode::MakeConstantRow(
    -1000.0, "The lower limit of every sample when exactly one image is connected.")};

/// The part of a record in which the arithmetic nodes are alike.
constexpr NodeRecord MakeRecord(const char* type_name, const char* display_name, unsigned third_number,
                                const char* icon, std::span<const AttributeRow> attributes, bool (*run_test)(),
                                const char* sentence, const char* keywords) {
  return {.library = &kValueLibrary,
          .type_name = type_name,
          .display_name = display_name,
          .type = NodeType(10, 320, third_number),
          .icon = icon,
          .group = "Arithmetic",
          .sentence = sentence,
          .keywords = keywords,
          .attributes = attributes,
          .inputs = ImageValueOperationManyNode::kInputs,
          .outputs = kImagePlugs,
          .reach = ReachesSamples,
          .has_image = HasImageOfAnyInput,
          .joins = true,
          .run_test = run_test};
}

}  // namespace

constinit const NodeRecord ImageValueAddNode::kRecord =
    MakeRecord("ImageValueAddNode", "Value Add", 5, "Add", kAddAttributes, SelfTests::RunAdd,
               "Adds a constant to one image, or adds up several images.",
               "plus,sum,total,blend,mix,lerp,merge,overlay,raise,lift,offset,brighten,brightness,linear "
               "dodge,combine,accumulate,average");

bool ImageValueAddNode::IsObsoleteAttribute(unsigned, const char* name) const {
  return std::string_view(name) == "mask_min";
}

ValueOperation* ImageValueAddNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new AdditionOperation(ReadConstant(inputs));
}

constinit const NodeRecord ImageValueSubtractNode::kRecord =
    MakeRecord("ImageValueSubtractNode", "Value Subtract", 90, "Subtract", kSubtractAttributes, SelfTests::RunAdd,
               "Subtracts a constant from one image, or every further image from the first.",
               "difference,minus,change,lower,darken,remove,cut away,sharpen,unsharp,high pass,ridge,curvature");

ValueOperation* ImageValueSubtractNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new SubtractionOperation(ReadConstant(inputs));
}

constinit const NodeRecord ImageValueMultiplyNode::kRecord = MakeRecord(
    "ImageValueMultiplyNode", "Value Multiply", 10, "Multiply", kMultiplyAttributes, SelfTests::RunMultiply,
    "Multiplies one image by a constant, or several images with each other.",
    "times,product,scale,gain,amplify,attenuate,fade,strength,exposure,brightness,mask,screen,invert,negative,blend,"
    "mix,lerp,square");

ValueOperation* ImageValueMultiplyNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new MultiplicationOperation(ReadConstant(inputs));
}

constinit const NodeRecord ImageValueDivideNode::kRecord =
    MakeRecord("ImageValueDivideNode", "Value Divide", 96, "Divide", kDivideAttributes, SelfTests::RunMultiply,
               "Divides one image by a constant, or the first image by every further one.",
               "ratio,quotient,relative,scale,flat field,normalize,even out");

ValueOperation* ImageValueDivideNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new DivideOperation(ReadConstant(inputs));
}

constinit const NodeRecord ImageValuePowerNode::kRecord =
    MakeRecord("ImageValuePowerNode", "Value Power", 69, "Power", kPowerAttributes, SelfTests::RunMultiply,
               "Raises the first image to the power of every further one, pixel by pixel.",
               "exponent,gamma,contrast,midtones,pow,square,curve");

ValueOperation* ImageValuePowerNode::CreateValueOperation(const std::vector<PlugValue>&) {
  constexpr float kExponent = 1.0F;
  return new PowerOperation(kExponent);
}

constinit const NodeRecord ImageValueMinimumNode::kRecord =
    MakeRecord("ImageValueMinimumNode", "Value Minimum", 16, "Min", kMinimumAttributes, SelfTests::RunMinimum,
               "Takes the lower of an image and a constant, or the lowest of several images.",
               "min,darken,lowest,intersect,intersection,and,limit,cap,ceiling,carve");

ValueOperation* ImageValueMinimumNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new MinimumOperation(ReadConstant(inputs));
}

constinit const NodeRecord ImageValueMaximumNode::kRecord =
    MakeRecord("ImageValueMaximumNode", "Value Maximum", 21, "Max", kMaximumAttributes, SelfTests::RunMaximum,
               "Takes the higher of an image and a constant, or the highest of several images.",
               "max,lighten,highest,union,or,combine,merge,limit,floor,sea level,water level,stamp");

ValueOperation* ImageValueMaximumNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new MaximumOperation(ReadConstant(inputs));
}
