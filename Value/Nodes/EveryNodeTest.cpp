// SPDX-License-Identifier: Apache-2.0
//
// What the first twenty node types share, and what each declares.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Tests/Support/FirstTwenty.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/NodeTable.h"

namespace {

using Kind = Attribute::Kind;

struct DeclaredAttribute {
  Kind kind;
  std::string name;
  double number = 0.0;
  double lowest = 0.0;
  double highest = 0.0;
  double step = 0.0;
  int decimals = 0;
  bool flag = false;
  std::string words;
};

DeclaredAttribute Number(const char* name, double value, double lowest, double highest, double step, int decimals) {
  return {Kind::kNumber, name, value, lowest, highest, step, decimals, false, ""};
}
DeclaredAttribute Flag(const char* name, bool value) { return {Kind::kFlag, name, 0, 0, 0, 0, 0, value, ""}; }
/// A choice whose default is the word at `index`.
DeclaredAttribute Choice(const char* name, int index, const char* words) {
  return {Kind::kChoice, name, static_cast<double>(index), 0, 0, 0, 0, false, words};
}

struct DeclaredNode {
  std::string type_name;
  std::string name;
  NodeType type;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::vector<DeclaredAttribute> attributes;
};

// The float nearest 0.01, written out.
constexpr double kSingleHundredth = 0.00999999977648258209228515625;

DeclaredNode Arithmetic(const char* type_name, const char* name, unsigned number, double constant) {
  return {type_name, name,      NodeType(10, 320, number),
          {"image"}, {"image"}, {Number("constant", constant, -1e9, 1e9, kSingleHundredth, 3)}};
}

const std::vector<DeclaredNode>& GetNodes() {
  static const std::vector<DeclaredNode> nodes{
      {"ImageToValueNode",
       "To Value",
       NodeType(10, 320, 0),
       {"image"},
       {"image"},
       {Number("low", 0.0, -999999999.0, 999999999.0, 0.01, 3), Number("high", 1.0, -999999999.0, 999999999.0, 0.01, 3),
        Flag("auto_level", false)}},
      Arithmetic("ImageValueAddNode", "Value Add", 5, 0.0),
      Arithmetic("ImageValueSubtractNode", "Value Subtract", 90, 0.0),
      Arithmetic("ImageValueMultiplyNode", "Value Multiply", 10, 1.0),
      Arithmetic("ImageValueDivideNode", "Value Divide", 96, 1.0),
      Arithmetic("ImageValuePowerNode", "Value Power", 69, 0.0),
      Arithmetic("ImageValueMinimumNode", "Value Minimum", 16, 1000.0),
      Arithmetic("ImageValueMaximumNode", "Value Maximum", 21, -1000.0),
      {"ImageValueClampNode",
       "Value Clamp",
       NodeType(10, 320, 42),
       {"image"},
       {"image"},
       {Choice("clamp", 0, "both,low,high"), Number("low", 0.0, -10000.0, 10000.0, 0.01, 3),
        Number("high", 0.0, -10000.0, 10000.0, 0.01, 3), Choice("profile", 0, "linear,smooth,perlin,arc_out,arc_in")}},
      {"ImageValueStepsNode",
       "Value Steps",
       NodeType(10, 320, 80),
       {"image"},
       {"image"},
       {Number("steps", 2.0, 2.0, 100000.0, 1.0, 0)}},
      {"ImageValueConditionNode",
       "Value Condition",
       NodeType(10, 320, 32),
       {"image"},
       {"image"},
       {Choice("condition", 0,
               "v_eq_min,v_df_min,v_eq_max,v_df_max,v_lt_a,v_lte_a,v_eq_a,v_gte_a,v_gt_a,a_lt_v_lt_b,a_lte_v_lt_b,"
               "a_lt_v_lte_b,a_lte_v_lte_b"),
        Number("a", 0.0, -10000.0, 10000.0, 0.01, 3), Number("b", 0.0, -10000.0, 10000.0, 0.01, 3)}},
      {"ImageValueCompareNode",
       "Value Compare",
       NodeType(10, 320, 37),
       {"image_a", "image_b"},
       {"image_a_l_b", "image_a_le_b", "image_a_eq_b", "image_a_df_b", "image_a_ge_b", "image_a_g_b"},
       {Choice("precision", 4,
               "0.0000000001,0.000000001,0.00000001,0.0000001,0.000001,0.0001,0.001,0.01,0.1,1.0,10.0,100.0,1000.0,"
               "10000.0,100000.0,1000000.0,10000000.0,100000000.0,1000000000.0")}},
      {"ImageValueRangeNode",
       "Value Range",
       NodeType(10, 320, 58),
       {"image"},
       {"image"},
       {Number("center", 0.0, -10000.0, 10000.0, 0.01, 3), Number("size", 0.0, 0.0, 10000.0, 0.01, 3),
        Number("falloff", 0.0, 0.0, 10000.0, 0.01, 3), Choice("profile", 0, "linear,smooth,arc_out,arc_in")}},
      {"ImageValueFunctionNode",
       "Value Function",
       NodeType(10, 320, 64),
       {"image"},
       {"image"},
       {Choice("function", 0,
               "absolute,sine,cosine,tangent,arcsine,arccosine,arctangent,floor,ceil,inverse,log,log2,log10,"
               "exponential,square_root,cubic_root,deg_to_rad,rad_to_deg")}},
      {"ImageReliefNode",
       "Relief",
       NodeType(10, 288, 26),
       {"image"},
       {"image"},
       {Number("radius", 1.0, 0.0, 250.0, 1.0, 0), Number("multiplier", 1.0, -1000.0, 1000.0, 1.0, 2),
        Choice("style", 0, "levels,inner_bevel,outer_bevel,emboss,pillow_emboss"),
        Choice("profile", 0, "linear,smooth,arc_out,arc_in"), Number("soften", 0.0, 0.0, 16.0, 1.0, 0),
        Flag("grow", false), Flag("seamless", true)}},
      {"ImageEuclideanDistanceNode",
       "Distance",
       NodeType(10, 288, 74),
       {"image"},
       {"image"},
       {Flag("seamless", true), Flag("normalize", false)}},
      {"ImageComputeGradientNode",
       "Value Gradient",
       NodeType(10, 320, 48),
       {"image"},
       {"output_x", "output_y"},
       {Flag("seamless", true)}},
      {"ImageAmbientOcclusionNode",
       "Ambient Occlusion",
       NodeType(10, 320, 85),
       {"image"},
       {"image"},
       {Number("radius", 3.0, 3.0, 100.0, 1.0, 1), Flag("seamless", true)}},
      {"ImageConnectedComponentsNode",
       "Connected Components",
       NodeType(10, 320, 101),
       {"image"},
       {"image"},
       {Number("threshold", 0.1, 0.0, 1.0, 0.01, 3), Choice("neighbors", 0, "all,cross"), Flag("seamless", true)}},
      {"ImageComponentEdgesNode",
       "Component Edges",
       NodeType(10, 320, 106),
       {"image"},
       {"image"},
       {Number("threshold", 0.1, 0.0, 1.0, 0.01, 3), Choice("neighbors", 0, "all,cross"), Flag("seamless", true),
        Flag("invert", true)}},
  };
  return nodes;
}

std::vector<std::string> Split(const std::string& list) {
  std::vector<std::string> words(1);
  for (const char letter : list) {
    if (letter == ',') words.emplace_back();
    if (letter != ',') words.back() += letter;
  }
  return words;
}

class EveryNode : public testing::TestWithParam<std::size_t> {
 protected:
  const DeclaredNode& declared_ = GetNodes()[GetParam()];
  const ScEng::RefPtr<NodeInterface> descriptor_{NodeTable::CreateDescriptor(GetParam())};
  const Testing::NodeRef<> node_{descriptor_->GetNodeFactory()->CreateNode()};
};

TEST_P(EveryNode, IsOfTheTypeThatDescriptorAndFactorySay) {
  EXPECT_EQ(descriptor_->GetNodeType(), declared_.type);
  EXPECT_EQ(descriptor_->GetNodeFactory()->GetNodeType(), declared_.type);
  EXPECT_EQ(node_->GetNodeType(), declared_.type);
  EXPECT_EQ(descriptor_->GetName(), declared_.name);
  EXPECT_EQ(node_->GetName(), declared_.name);
  EXPECT_EQ(descriptor_->GetNodeFactory()->GetTypeName(), declared_.type_name);
}

TEST_P(EveryNode, DeclaresItsImagePlugs) {
  ASSERT_EQ(node_->GetNumRegularInputs(), declared_.inputs.size());
  ASSERT_EQ(node_->GetOutplugs().size(), declared_.outputs.size());
  for (unsigned i = 0; i < declared_.inputs.size(); ++i) {
    EXPECT_EQ(node_->GetInplugs()[i].type, 8U);
    EXPECT_EQ(node_->GetInplugName(i), declared_.inputs[i]);
  }
  for (unsigned i = 0; i < declared_.outputs.size(); ++i) {
    EXPECT_EQ(node_->GetOutplugs()[i].type, 8U);
    EXPECT_EQ(node_->GetOutplugName(i), declared_.outputs[i]);
  }
}

TEST_P(EveryNode, DeclaresItsAttributes) {
  ASSERT_EQ(node_->GetNumAttributes(), declared_.attributes.size());
  for (std::size_t id = 0; id < declared_.attributes.size(); ++id) {
    const DeclaredAttribute& declared = declared_.attributes[id];
    const Attribute& attribute = *node_->GetAttribute(id);
    SCOPED_TRACE(declared.name);
    EXPECT_EQ(attribute.GetId(), id);
    EXPECT_EQ(attribute.GetName(), declared.name);
    EXPECT_EQ(attribute.GetKind(), declared.kind);
    EXPECT_EQ(attribute.GetRefCount(), 1U);
    if (declared.kind == Kind::kFlag) {
      EXPECT_EQ(attribute.GetDefault().GetFlag(), declared.flag);
      EXPECT_EQ(attribute.GetValue().GetFlag(), declared.flag);
    } else if (declared.kind == Kind::kChoice) {
      const std::vector<std::string> words = Split(declared.words);
      EXPECT_EQ(attribute.GetChoices(), words);
      EXPECT_EQ(attribute.GetDefault().GetText(), words[static_cast<std::size_t>(declared.number)]);
      EXPECT_EQ(attribute.GetValue().GetText(), words[static_cast<std::size_t>(declared.number)]);
    } else {
      EXPECT_EQ(attribute.GetDefault().GetNumber(), declared.number);
      EXPECT_EQ(attribute.GetValue().GetNumber(), declared.number);
      EXPECT_EQ(attribute.GetLowest(), declared.lowest);
      EXPECT_EQ(attribute.GetHighest(), declared.highest);
      EXPECT_EQ(attribute.GetStep(), declared.step);
      EXPECT_EQ(attribute.GetDecimals(), declared.decimals);
    }
  }
}

TEST_P(EveryNode, OffersEachAttributeAsAPlugBehindItsInputs) {
  ASSERT_EQ(node_->GetInplugs().size(), declared_.inputs.size() + declared_.attributes.size());
  for (unsigned id = 0; id < declared_.attributes.size(); ++id) {
    const unsigned plug = static_cast<unsigned>(declared_.inputs.size()) + id;
    EXPECT_EQ(node_->GetInplugName(plug), declared_.attributes[id].name);
    EXPECT_EQ(node_->GetInplugIdFromAttributeId(id), plug);
  }
}

TEST_P(EveryNode, UnderstandsEveryEventAlsoBeforeItsFirstEvaluation) {
  for (const std::uint32_t kind : {11U, 11U, 0U, 1U, 10U, 12U, 0xFFFFFFFFU}) {
    NodeEvent event;
    event.kind = kind;
    EXPECT_TRUE(node_->OnProcessEvent(event)) << kind;
  }
  for (unsigned output = 0; output < 8; ++output) EXPECT_EQ(node_->GetOutputImage(output), nullptr);
}

TEST_P(EveryNode, StartsEnabledAndIdle) {
  EXPECT_TRUE(node_->IsEnabled());
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
  EXPECT_EQ(node_->GetRefCount(), 1U);
}

TEST_P(EveryNode, HasNoOutputWithoutInputs) {
  for (unsigned output = 0; output < declared_.outputs.size(); ++output) {
    node_->Evaluate(output, Testing::MakeInputs(*node_, {}));
    EXPECT_EQ(node_->GetOutputImage(output), nullptr);
  }
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_P(EveryNode, HasNoOutputBeyondItsPlugs) {
  if (declared_.type_name == "ImageValueStepsNode") return;
  const auto image = Testing::MakeRow({0.5F, 1.0F});
  node_->Evaluate(0, Testing::MakeInputs(*node_, std::vector<const Image*>(declared_.inputs.size(), image.Get())));
  const auto outputs = static_cast<unsigned>(declared_.outputs.size());
  for (const unsigned output : {outputs, outputs + 1, 0xFFFFFFFFU}) EXPECT_EQ(node_->GetOutputImage(output), nullptr);
}

TEST_P(EveryNode, StoresItsAttributesInVersionZeroUnlessItIsRelief) {
  EXPECT_EQ(node_->GetAttributeVersion(), declared_.type_name == "ImageReliefNode" ? 1U : 0U);
}

TEST_P(EveryNode, KnowsNoObsoleteAttributeUnlessItIsAdd) {
  EXPECT_EQ(node_->IsObsoleteAttribute(0, "mask_min"), declared_.type_name == "ImageValueAddNode");
  EXPECT_FALSE(node_->IsObsoleteAttribute(0, "mask_max"));
  for (const DeclaredAttribute& attribute : declared_.attributes) {
    EXPECT_FALSE(node_->IsObsoleteAttribute(0, attribute.name.c_str()));
  }
}

TEST_P(EveryNode, KeepsCurrentAttributeNames) {
  for (const DeclaredAttribute& attribute : declared_.attributes) {
    for (const unsigned version : {0U, 1U, 2U}) {
      EXPECT_EQ(node_->TranslateAttributeName(version, attribute.name), attribute.name);
    }
  }
}

TEST_P(EveryNode, TranslatesTheOldNamesOfItsOwnKindOnly) {
  const auto translate = [&](const char* name) { return node_->TranslateAttributeName(0, name); };
  const bool is_arithmetic = declared_.attributes.front().name == "constant";
  const bool is_to_value = declared_.type_name == "ImageToValueNode";
  const bool is_limited = is_to_value || declared_.type_name == "ImageValueClampNode";
  EXPECT_EQ(translate("value"), is_arithmetic ? "constant" : "value");
  EXPECT_EQ(translate("min"), is_limited ? "low" : "min");
  EXPECT_EQ(translate("max"), is_limited ? "high" : "max");
  EXPECT_EQ(translate("saturate"), is_to_value ? "auto_level" : "saturate");
  EXPECT_EQ(translate("height"), declared_.type_name == "ImageReliefNode" ? "multiplier" : "height");
}

INSTANTIATE_TEST_SUITE_P(FirstTwenty, EveryNode, testing::Range<std::size_t>(0, Testing::kFirstTwenty.size()),
                         [](const auto& parameter) { return GetNodes()[parameter.param].type_name; });

}  // namespace
