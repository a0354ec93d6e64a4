// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Attribute.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::Frame;
using ScEng::Point;
using ScEng::RefPtr;
using ScEng::Rgbo;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// An attribute of no node.
template <class... Arguments>
RefPtr<Attribute> Make(Arguments&&... arguments) {
  return RefPtr<Attribute>(new Attribute(nullptr, 3, "name", std::forward<Arguments>(arguments)...));
}

RefPtr<Attribute> MakeNumber() { return Make(0.5, -1.0, 2.0, 0.25, 1); }

TEST(Attribute, KnowsItsNameAndId) {
  const auto attribute = Make(true);
  EXPECT_EQ(attribute->GetName(), "name");
  EXPECT_EQ(attribute->GetId(), 3U);
  EXPECT_TRUE(attribute->GetFolder().empty());
  attribute->SetFolder("/tmp");
  EXPECT_EQ(attribute->GetFolder(), "/tmp");
}

TEST(Attribute, HasTheKindOfItsConstructor) {
  struct Form {
    RefPtr<Attribute> attribute;
    Attribute::Kind kind;
    const char* name;
    unsigned plug;
  };
  const Form kForms[] = {
      {Make(false), Attribute::Kind::kFlag, "flag", 1},
      {MakeNumber(), Attribute::Kind::kNumber, "number", 2},
      {Make(0, "a,b"), Attribute::Kind::kChoice, "choice", 3},
      {Make(std::string("text")), Attribute::Kind::kString, "string", 3},
      {Make(Rgbo{}), Attribute::Kind::kColor, "color", 4},
      {Make(Point{}), Attribute::Kind::kPoint, "point", 5},
      {Make(Frame{}), Attribute::Kind::kFrame, "frame", 6},
  };
  for (const Form& form : kForms) {
    EXPECT_EQ(form.attribute->GetKind(), form.kind);
    EXPECT_STREQ(form.attribute->GetKindName(), form.name);
    EXPECT_EQ(form.attribute->GetPlugType(), form.plug);
    EXPECT_EQ(form.attribute->GetValue().GetType(), form.plug);
  }
}

TEST(Attribute, StartsAtItsDefault) {
  EXPECT_TRUE(Make(true)->GetValue().GetFlag());
  EXPECT_EQ(MakeNumber()->GetValue().GetNumber(), 0.5);
  EXPECT_EQ(Make(1, "a,b,c")->GetValue().GetText(), "b");
  EXPECT_EQ(Make(std::string("x,y"))->GetValue().GetText(), "x,y");
  EXPECT_EQ(Make(Rgbo{0.1, 0.2, 0.3, 0.4})->GetValue().GetColor(), (Rgbo{0.1, 0.2, 0.3, 0.4}));
  EXPECT_EQ(Make(Point{1, 2})->GetValue().GetPoint(), (Point{1, 2}));
  EXPECT_EQ(Make(Frame{1, 2, 3, 4})->GetValue().GetFrame(), (Frame{1, 2, 3, 4}));
}

TEST(Attribute, NumberTellsItsForm) {
  const auto number = MakeNumber();
  EXPECT_EQ(number->GetLowest(), -1.0);
  EXPECT_EQ(number->GetHighest(), 2.0);
  EXPECT_EQ(number->GetStep(), 0.25);
  EXPECT_EQ(number->GetDecimals(), 1);
}

TEST(Attribute, NumberIsClampedToItsBounds) {
  const auto number = MakeNumber();
  const auto set = [&](double value) {
    EXPECT_TRUE(number->SetNumber(value, false));
    return number->GetValue().GetNumber();
  };
  EXPECT_EQ(set(1.5), 1.5);
  EXPECT_EQ(set(2.0), 2.0);
  EXPECT_EQ(set(2.0000001), 2.0);
  EXPECT_EQ(set(-1.0), -1.0);
  EXPECT_EQ(set(-7.0), -1.0);
  EXPECT_EQ(set(kInfinity), 2.0);
  EXPECT_EQ(set(-kInfinity), -1.0);
}

TEST(Attribute, NumberIsNotRoundedUnlessAsked) {
  const auto number = MakeNumber();
  number->SetNumber(0.123456789012345, false);
  EXPECT_EQ(number->GetValue().GetNumber(), 0.123456789012345);
  number->SetNumber(0.1234, true);
  EXPECT_EQ(number->GetValue().GetNumber(), 0.1);
  number->SetNumber(0.1799, true);
  EXPECT_EQ(number->GetValue().GetNumber(), 0.2);
  number->SetNumber(2.04, true);
  EXPECT_EQ(number->GetValue().GetNumber(), 2.0);
  number->SetNumber(9.0, true);
  EXPECT_EQ(number->GetValue().GetNumber(), 2.0);
  const auto whole = Make(0.0, -1e9, 1e9, 1.0, 0);
  whole->SetNumber(-3.7, true);
  EXPECT_EQ(whole->GetValue().GetNumber(), -4.0);
}

TEST(Attribute, NumbersWithoutBoundsStayAsTheyAre) {
  constexpr double kMost = std::numeric_limits<double>::max();
  const auto number = Make(0.0, -kMost, kMost, 1.0, 6);
  for (const double value : {1e308, -1e308, 4e-320, 16777217.0}) {
    EXPECT_TRUE(number->SetNumber(value, false));
    EXPECT_EQ(number->GetValue().GetNumber(), value);
  }
  EXPECT_TRUE(number->SetNumber(1e308, true));
  EXPECT_EQ(number->GetValue().GetNumber(), 1e308);
}

TEST(Attribute, NaNIsRefused) {
  const auto number = MakeNumber();
  number->SetNumber(1.25, false);
  EXPECT_FALSE(number->SetNumber(kNaN, false));
  EXPECT_FALSE(number->SetNumber(kNaN, true));
  EXPECT_EQ(number->GetValue().GetNumber(), 1.25);
}

TEST(Attribute, ChoiceKnowsTheIndexOfItsWords) {
  const auto choice = Make(0, "linear,smooth,arc_out");
  EXPECT_EQ(choice->GetChoices(), (std::vector<std::string>{"linear", "smooth", "arc_out"}));
  EXPECT_EQ(choice->GetChoiceIndex("linear"), 0);
  EXPECT_EQ(choice->GetChoiceIndex("arc_out"), 2);
  EXPECT_EQ(choice->GetChoiceIndex(""), -1);
  EXPECT_EQ(choice->GetChoiceIndex("arc"), -1);
  EXPECT_EQ(choice->GetChoiceIndex("Linear"), -1);
  EXPECT_EQ(choice->GetChoiceIndex("linear "), -1);
  EXPECT_EQ(choice->GetChoiceIndex("linear,smooth"), -1);
}

TEST(Attribute, ChoiceTakesOnlyItsWords) {
  const auto choice = Make(0, "linear,smooth");
  EXPECT_TRUE(choice->SetChoice("smooth", false));
  EXPECT_EQ(choice->GetValue().GetText(), "smooth");
  EXPECT_FALSE(choice->SetChoice("rough", false));
  EXPECT_FALSE(choice->SetChoice("", false));
  EXPECT_EQ(choice->GetValue().GetText(), "smooth");
}

TEST(Attribute, EmptyAndOddChoiceLists) {
  const auto none = Make(0, "");
  EXPECT_TRUE(none->GetChoices().empty());
  EXPECT_EQ(none->GetChoiceIndex(""), -1);
  EXPECT_EQ(none->GetValue().GetText(), "");
  const auto gap = Make(0, "a,,b");
  EXPECT_EQ(gap->GetChoiceIndex("b"), 2);
  EXPECT_EQ(gap->GetChoiceIndex(""), -1);
  EXPECT_EQ(Make(7, "a,b")->GetValue().GetText(), "");
  EXPECT_EQ(Make(-1, "a,b")->GetValue().GetText(), "");
}

TEST(Attribute, OtherFormsTakeTheirValues) {
  const auto flag = Make(false);
  EXPECT_TRUE(flag->SetFlag(true, false));
  EXPECT_TRUE(flag->GetValue().GetFlag());
  const auto text = Make(std::string("a"), Attribute::StringUse::kReadPath);
  EXPECT_EQ(text->GetStringUse(), Attribute::StringUse::kReadPath);
  EXPECT_TRUE(text->SetString("", false));
  EXPECT_EQ(text->GetValue().GetText(), "");
  const auto color = Make(Rgbo{});
  EXPECT_TRUE(color->SetRgbo(-1, 2, 0.5, 0.25, false));
  EXPECT_EQ(color->GetValue().GetColor(), (Rgbo{-1, 2, 0.5, 0.25}));
  const auto point = Make(Point{});
  EXPECT_TRUE(point->SetPoint(1.25, -2.75, false));
  EXPECT_EQ(point->GetValue().GetPoint(), (Point{1.25, -2.75}));
  EXPECT_TRUE(point->SetPoint(1.25, -2.75, true));
  EXPECT_EQ(point->GetValue().GetPoint(), (Point{1, -3}));
  const auto frame = Make(Frame{});
  EXPECT_TRUE(frame->SetFrame(1.2, 2.7, 3.2, 4.9, false));
  EXPECT_EQ(frame->GetValue().GetFrame(), (Frame{1.2, 2.7, 3.2, 4.9}));
  EXPECT_TRUE(frame->SetFrame(1.2, 2.7, 3.2, 4.9, true));
  EXPECT_EQ(frame->GetValue().GetFrame(), (Frame{1, 3, 3, 5}));
}

TEST(Attribute, RefusesValuesOfAnotherKind) {
  const auto number = MakeNumber();
  EXPECT_FALSE(number->SetFlag(true, false));
  EXPECT_FALSE(number->SetChoice("a", false));
  EXPECT_FALSE(number->SetString("1", false));
  EXPECT_FALSE(number->SetRgbo(1, 1, 1, 1, false));
  EXPECT_FALSE(number->SetPoint(1, 1, false));
  EXPECT_FALSE(number->SetFrame(1, 1, 1, 1, false));
  EXPECT_EQ(number->GetValue().GetNumber(), 0.5);
  const auto choice = Make(0, "a,b");
  EXPECT_FALSE(choice->SetString("b", false));
  EXPECT_FALSE(choice->SetNumber(1.0, false));
  EXPECT_EQ(choice->GetValue().GetText(), "a");
  EXPECT_FALSE(Make(std::string("a"))->SetChoice("a", false));
}

TEST(Attribute, DefaultIsKeptApartFromTheValue) {
  const auto number = MakeNumber();
  number->SetNumber(1.5, false);
  EXPECT_EQ(number->GetDefault().GetNumber(), 0.5);
  number->SetDefault(1.0, 9.0, 9.0, 9.0);
  EXPECT_EQ(number->GetDefault().GetNumber(), 1.0);
  EXPECT_EQ(number->GetValue().GetNumber(), 1.5);
  number->ResetToDefault();
  EXPECT_EQ(number->GetValue().GetNumber(), 1.0);

  const auto point = Make(Point{});
  point->SetDefault(1, 2, 3, 4);
  EXPECT_EQ(point->GetDefault().GetPoint(), (Point{1, 2}));
  const auto color = Make(Rgbo{});
  color->SetDefault(1, 2, 3, 4);
  EXPECT_EQ(color->GetDefault().GetColor(), (Rgbo{1, 2, 3, 4}));
  EXPECT_EQ(color->GetValue().GetColor(), (Rgbo{0, 0, 0, 1}));
  const auto frame = Make(Frame{});
  frame->SetDefault(1, 2, 3, 4);
  frame->ResetToDefault();
  EXPECT_EQ(frame->GetValue().GetFrame(), (Frame{1, 2, 3, 4}));
  const auto choice = Make(1, "a,b");
  choice->SetChoice("a", false);
  choice->ResetToDefault();
  EXPECT_EQ(choice->GetValue().GetText(), "b");
}

class CountingNode : public Testing::TestNode {
 public:
  CountingNode() {
    Add("number", 0.0, -1.0, 1.0, 0.1, 2);
    Add("choice", 0, "a,b");
    UpdateInplugsAndOutplugs();
    SetChangeListener([this](Node& node) { changes += &node == this ? 1 : 1000; });
  }
  [[nodiscard]] NodeType GetNodeType() const override { return {}; }
  [[nodiscard]] std::string GetName() const override { return "Counting"; }
  int changes = 0;
};

TEST(Attribute, TellsItsNodeOfEveryValueTaken) {
  const RefPtr<CountingNode> node(new CountingNode);
  Attribute* number = node->GetAttribute(std::string("number"));
  Attribute* choice = node->GetAttribute(std::string("choice"));
  number->SetNumber(0.5, false);
  EXPECT_EQ(node->changes, 1);
  choice->SetChoice("b", false);
  EXPECT_EQ(node->changes, 2);
  number->SetNumber(kNaN, false);
  choice->SetChoice("c", false);
  number->SetFlag(true, false);
  EXPECT_EQ(node->changes, 2);
  number->ResetToDefault();
  EXPECT_EQ(node->changes, 3);
}

TEST(PlugValue, ReadsAsANeutralValueOfAnotherKind) {
  const PlugValue nothing;
  EXPECT_FALSE(nothing.HasValue());
  EXPECT_EQ(nothing.GetType(), 0U);
  EXPECT_EQ(nothing.GetImage(), nullptr);
  EXPECT_FALSE(nothing.GetFlag());
  EXPECT_EQ(nothing.GetNumber(), 0.0);
  EXPECT_EQ(nothing.GetText(), "");
  EXPECT_EQ(nothing.GetColor(), (Rgbo{0, 0, 0, 1}));
  EXPECT_EQ(nothing.GetPoint(), (Point{0, 0}));
  EXPECT_EQ(nothing.GetFrame(), (Frame{0, 0, 0, 0}));
  const PlugValue number(2.5);
  EXPECT_TRUE(number.HasValue());
  EXPECT_EQ(number.GetNumber(), 2.5);
  EXPECT_EQ(number.GetText(), "");
  EXPECT_FALSE(number.GetFlag());
  const Image image(1, 1, ColorMode::kValue, nullptr);
  EXPECT_EQ(PlugValue(&image).GetType(), 8U);
  EXPECT_EQ(PlugValue(&image).GetImage(), &image);
  EXPECT_EQ(image.GetRefCount(), 0U);
}

TEST(PlugType, HasWords) {
  EXPECT_STREQ(PlugType::GetName(8), "image");
  EXPECT_STREQ(PlugType::GetName(2), "number");
  EXPECT_STREQ(PlugType::GetName(3), "text");
  EXPECT_STREQ(PlugType::GetName(99), "nothing");
}

}  // namespace
