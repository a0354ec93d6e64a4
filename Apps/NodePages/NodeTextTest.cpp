// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/NodeText.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Host/Tools/NodeLibrary.h"
#include "Tests/Support/HostTesting.h"

namespace {

constexpr const char* kName = "text";

/// A complete text of Value Clamp.
const std::string kClamp = R"(---
disabled: it keeps its result.
old: min = low
old: max = high
show: height.image | grey 0 1 | Before
show: clamp.image | signed 2 | After
---
## What it is for

Limiting.

## Inputs

### image

Values.

## Attributes

### clamp

`both`, `low` or `high`.

### low

The lower limit.

### high

The upper limit.

### profile

`linear`, `smooth`, `perlin`, `arc_out`, `arc_in`.

## Outputs

### image

Values.

## What surprises

- Nothing.

## Try it

```sh
## not a heading
```
)";

class NodeTexts : public testing::Test {
 protected:
  NodeTexts() {
    ScEng::Status status;
    library_ = ScEng::NodeLibrary::Load(VALUE_LIBRARY_FILE, status);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    for (const auto& descriptor : library_->GetDescriptors()) {
      if (descriptor->GetName() == "Value Clamp") clamp_.Reset(descriptor->GetNodeFactory()->CreateNode());
    }
  }

  NodeText Read(const std::string& text) {
    const auto file = folder_ / "text.md";
    std::ofstream(file) << text;
    return ReadNodeText(file, kName, errors_);
  }

  /// What is wrong with the text of Value Clamp after a part of it was replaced.
  std::vector<std::string> FindErrors(const std::string& from, const std::string& to) {
    std::string text = kClamp;
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    text.replace(place, from.size(), to);
    const NodeText read = Read(text);
    if (errors_.empty()) CheckNodeText(read, *clamp_, {"min", "max"}, kName, errors_);
    return errors_;
  }

  Testing::TemporaryFolder folder_;
  std::shared_ptr<ScEng::NodeLibrary> library_;
  ScEng::RefPtr<Node> clamp_;
  std::vector<std::string> errors_;
};

using Errors = std::vector<std::string>;

TEST_F(NodeTexts, AreReadInParts) {
  const NodeText text = Read(kClamp);
  EXPECT_EQ(errors_, Errors{});
  EXPECT_EQ(text.old_names, (NodeText::Entries{{"min", "low"}, {"max", "high"}}));
  ASSERT_EQ(text.pictures.size(), 2U);
  EXPECT_EQ(text.pictures[1].source, "clamp.image");
  EXPECT_EQ(text.pictures[1].look.high, 2.0F);
  EXPECT_EQ(text.pictures[1].caption, "After");
  EXPECT_EQ(text.use, "Limiting.");
  ASSERT_EQ(text.attributes.size(), 4U);
  EXPECT_EQ(text.attributes[1], (std::pair<std::string, std::string>("low", "The lower limit.")));
  EXPECT_EQ(text.trial, "```sh\n## not a heading\n```");
}

TEST_F(NodeTexts, PassWhenComplete) { EXPECT_EQ(FindErrors("Limiting.", "Cutting."), Errors{}); }

TEST_F(NodeTexts, MayLeaveAnAttributeToItsRow) {
  EXPECT_EQ(FindErrors("### high\n\nThe upper limit.\n", ""), Errors{});
}

TEST_F(NodeTexts, MustSpeakOfEveryAttributeWithWords) {
  EXPECT_EQ(FindErrors("### clamp\n\n`both`, `low` or `high`.\n", ""),
            Errors{"text: the attribute \"clamp\" is missing"});
}

TEST_F(NodeTexts, MustSpeakOfEveryPlug) {
  EXPECT_EQ(FindErrors("## Outputs\n\n### image\n\nValues.\n", "## Outputs\n"),
            Errors{"text: the output \"image\" is missing"});
}

TEST_F(NodeTexts, MustNotSpeakOfWhatDoesNotExist) {
  EXPECT_EQ(FindErrors("### high", "### top\n\nThe top.\n\n### high"),
            Errors{"text: the node has no attribute \"top\""});
}

TEST_F(NodeTexts, MustSaySomething) {
  EXPECT_EQ(FindErrors("The upper limit.", ""), Errors{"text: nothing is said of the attribute \"high\""});
}

TEST_F(NodeTexts, MustKeepTheOrderOfTheNode) {
  EXPECT_EQ(FindErrors("### low\n\nThe lower limit.\n\n### high\n", "### high\n\nThe lower limit.\n\n### low\n"),
            Errors{"text: the attributes are not in the order of the node"});
}

TEST_F(NodeTexts, MustNotSpeakOfAnythingTwice) {
  EXPECT_EQ(FindErrors("### high", "### low\n\nAgain.\n\n### high"),
            Errors{"text: the attribute \"low\" is there twice"});
}

TEST_F(NodeTexts, MustSpeakOfEveryChoice) {
  EXPECT_EQ(FindErrors("`perlin`, ", ""),
            Errors{"text: the text of the attribute \"profile\" lacks its word \"perlin\""});
}

TEST_F(NodeTexts, MustSpeakOfEveryOldName) {
  EXPECT_EQ(FindErrors("old: min = low\n", ""), Errors{"text: the old name \"min\" is missing"});
}

TEST_F(NodeTexts, MustNotInventOldNames) {
  EXPECT_EQ(FindErrors("old: max = high", "old: max = high\nold: top = high"),
            Errors{"text: \"top\" is not an old name of \"high\""});
  errors_.clear();
  EXPECT_EQ(FindErrors("old: max = high", "old: max = high\ngone: mask_min"),
            Errors{"text: \"mask_min\" is not an attribute that the node once had"});
}

TEST_F(NodeTexts, NameWhatIsWrongWithTheirForm) {
  EXPECT_EQ(FindErrors("disabled: it keeps its result.\n", ""), Errors{"text: \"disabled\" is missing or empty"});
  errors_.clear();
  EXPECT_EQ(FindErrors("disabled:", "off:"),
            (Errors{"text: there is no key \"off\"", "text: \"disabled\" is missing or empty"}));
  errors_.clear();
  EXPECT_EQ(FindErrors("signed 2", "signed"),
            (Errors{"text: show: \"clamp.image | signed | After\" is not of the form OUTPUT | LOOK | CAPTION",
                    "text: there are fewer than two \"show\" lines; a page has a before and an after"}));
  errors_.clear();
  EXPECT_EQ(FindErrors("## What surprises\n", "## Surprises\n"),
            (Errors{"text: there is no section \"Surprises\"", "text: \"- Nothing.\" belongs to no section",
                    "text: \"What surprises\" is missing or empty"}));
}

TEST_F(NodeTexts, AreMissedWhereThereIsNone) {
  ReadNodeText(folder_ / "none.md", kName, errors_);
  EXPECT_EQ(errors_, Errors{"text: the text is missing; Docs/AddANode.md says what it holds"});
}

}  // namespace
